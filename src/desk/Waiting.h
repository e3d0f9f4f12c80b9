#pragma once

#include "einvoice/InvoiceInbox.h"

/// How many days from today an instalment counts as due soon; today is the first.
inline constexpr long kDueSoonDays = 7;
/// How many of a kind are listed.
inline constexpr std::size_t kWaitingListed = 10;

struct WaitingInstalment {
    long number = 0;  ///< within its side
    long due_day = 0; ///< day number
    long long cents = 0;
    std::string name; ///< of the customer or supplier
    std::string invoice;
};

/// Open instalments of one side in one stretch of time.
struct WaitingInstalments {
    long count = 0;
    long long cents = 0;
    std::vector<WaitingInstalment> first; ///< by due date, at most kWaitingListed
};

struct UnbalancedEntry {
    long number = 0, day = 0;
    std::string text; ///< its description, or its causale's
    long long debit_cents = 0, credit_cents = 0;
};

/// What waits for someone.
struct Waiting {
    long invoices = 0;                       ///< received and not registered
    bool are_invoices_at_least = false;      ///< files of older versions have not been read yet
    std::vector<InvoiceRow> oldest_invoices; ///< at most kWaitingListed, by arrival; a row may have a fault instead

    // By side: 0 customers, 1 suppliers. Held in a payment slip counts as open until it is paid.
    WaitingInstalments overdue[2]; ///< due before today, the one longest overdue first
    WaitingInstalments due_soon[2];

    long unbalanced = 0;                             ///< entries from the fiscal year on
    std::vector<UnbalancedEntry> unbalanced_entries; ///< at most kWaitingListed, by date

    bool IsNothing() const;
};

/// Reads what waits in the current company. Holds nothing between two readings.
class WaitingReader {
  public:
    /// No transaction may be open. @param today  day number    @throws SAException
    Waiting Read(SACommand *cmd, long today);
};
