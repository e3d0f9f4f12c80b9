#pragma once

#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceRegistration.h"

#include <functional>
#include <string>
#include <vector>

// Registering many invoices at once: what would be stored is seen first, then stored in one run. Whatever a person
// would be asked about stays for the editor.

/// How one document would be stored, or what a person has to decide first.
struct BatchLine {
    InvoiceRow invoice;
    bool is_ready = false;
    bool is_registered = false; ///< the journal has it already; neither ready nor in need of anything
    std::string reason;         ///< why it stays for the editor, on one line
    long supplier = 0;          ///< a new one has the number proposed for it, which it may not get
    std::string supplier_name;  ///< the seller's as long as no supplier is found
    bool is_new_supplier = false;
    long causale = 0;
    std::string causale_text;
    long day = 0;          ///< of registration
    std::string vat_codes; ///< "22, 10"
    double total = 0;      ///< of the entry, with its sign; of the document as long as there is none
    long instalments = 0;  ///< 0 = none are generated, the notes say why
    std::vector<std::string> notes;
};

struct BatchPlan {
    std::vector<BatchLine> lines; ///< by date of the document, so that protocols follow it

    long Ready() const; ///< how many would be stored
};

struct BatchOptions {
    RegistrationChoices choices; ///< what is set answers; what is not leaves the document to the editor
    long causale = 0;            ///< instead of the suppliers'; 0 = theirs
    bool new_suppliers = false;  ///< unknown sellers become suppliers, without terms and so without instalments
    bool answer_yes = false;     ///< questions are taken as answered with Yes; missing terms make no instalments
};

/// One document of a filed invoice.
struct BatchTarget {
    long code = 0;
    std::size_t document = 0;
};

/// Prepares each document as its registration would, asks nobody and stores nothing. Of two documents that would be
/// duplicates of each other only the earlier is ready. No transaction may be open.
/// @param targets  the documents; empty = all that are not registered yet
/// @param progress  called after each; false stops the planning, and what was not looked at is not in the plan
/// @throws SAException; what is wrong with a document alone is its reason
BatchPlan PlanRegistration(SACommand *cmd, const std::vector<BatchTarget> &targets, const BatchOptions &options,
                           const std::function<bool(long done, long of)> &progress = {});

/// How one document of a run ended. Without the entry itself: a run may have ten thousand.
struct BatchResult {
    bool registered = false;
    std::string reason; ///< why not, on one line
    long entry = 0, protocol = 0, vat_register = 0;
    long vat_lines = 0, instalments = 0;
    double total = 0;
    std::vector<std::string> notes;
};

BatchResult ResultOf(const RegistrationOutcome &outcome);

struct BatchOutcome {
    BatchTarget target;
    BatchResult outcome;
};

/// Stores what is ready, each document in a transaction of its own, after looking at it again: somebody may have
/// registered it meanwhile. A document that is refused does not stop the others; an archive that fails does.
/// @param each  called with every outcome as it comes; false stops the run after it, what was stored stays
/// @throws SAException when the archive cannot be used any more
std::vector<BatchOutcome> RegisterPlanned(SACommand *cmd, const BatchPlan &plan, const BatchOptions &options,
                                          const std::function<bool(const BatchOutcome &)> &each = {});
