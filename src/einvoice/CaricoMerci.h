#pragma once

#include "einvoice/InvoiceInbox.h"
#include "tarvolumera/Warehouse.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

// The goods of a received invoice loaded into the warehouse.

/// How the article of a line was found.
enum class ArticleMatch {
    None,
    Remembered, ///< somebody matched this supplier's code before
    OwnCode,    ///< the line carries a code that is one of ours
    Ean,        ///< by the bar code
    ByHand
};
const char *ArticleMatchText(ArticleMatch match); ///< "abbinamento noto", "codice nostro" ...

/// One line of an invoice as goods: signs are those of the warehouse.
struct LoadLine {
    long number = 0;                ///< NumeroLinea
    std::vector<std::string> codes; ///< that may name an article, bar codes left out
    std::vector<std::string> eans;
    std::string description, unit;
    double quantity = 0; ///< negative when goods go back
    double price = 0;    ///< of one, never negative unless the quantity is 0
    std::array<double, 3> discounts{};
    double amount = 0; ///< rounded to cents
    double rate = 0;

    ArticleMatch match = ArticleMatch::None;
    Text<20> article; ///< empty = none yet

    /// The code under which a match is remembered: the supplier's, or the bar code where there is no other. Empty when
    /// the line has no code at all.
    const std::string &Code() const;
};

/// The goods of one document, before anything is stored.
struct GoodsOfInvoice {
    std::vector<LoadLine> lines;
    std::vector<std::string> notes;  ///< what is left out and why: charges, discounts, descriptions
    bool has_value_discount = false; ///< in the head
    bool has_more_discounts = false; ///< a line has more than fit
};

/// Reads the lines of a document: goods and services with their sign, discounts in percent. Charges, rebates and
/// premiums (AC, SC, AB, PR) are no goods, nor are lines that only describe.
GoodsOfInvoice ReadGoods(const fatturapa::FatturaElettronicaBody &body);

/// Finds the articles of lines that have none: by what the supplier's codes were matched with before, by our own code,
/// by the bar code. Where the last two name different articles the line stays without.
void MatchArticles(SACommand *cmd, long supplier, std::vector<LoadLine> *lines);

/// What the load asks for: a window on the desk, options on the command line.
struct LoadChoices {
    /// Completes and corrects the articles; a line that it matched is ByHand and remembered for the supplier. Called
    /// when a line with a code has no article, or one that nobody has confirmed (OwnCode). @return false = given up
    std::function<bool(long supplier, std::vector<LoadLine> *lines)> match_by_hand;
    bool skip_unmatched = false; ///< lines without article are left out without a question
    long supplier = 0;           ///< used when the invoice's own is not found
};

struct LoadOutcome {
    bool loaded = false;
    std::string reason;             ///< why not
    TESTATE document;               ///< as stored
    std::vector<RIGHE> rows;        ///< as stored
    std::vector<LoadLine> lines;    ///< with their articles, in the order of the invoice
    double taxable = 0;             ///< of the invoice, with the sign of the load
    std::vector<std::string> notes; ///< what was left out, and the difference between load and invoice
};

/// Loads a body of a filed invoice into the warehouse: one document, its rows and the new matches in one transaction.
/// Tells the user what is refused or left out; all questions come before anything is written.
/// @throws SAException, InvoiceFileError, and then nothing is stored
LoadOutcome LoadIntoWarehouse(SACommand *cmd, long code, std::size_t document, const LoadChoices &choices);
