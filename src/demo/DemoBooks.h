#pragma once

#include "demo/DemoRandom.h"
#include "schedule/Instalments.h"
#include "tarvolumera/JournalEntry.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

class SACommand;

/// An instalment that was generated and is not paid yet.
struct OpenInstalment {
    long number = 0; ///< sca_num
    long due_day = 0, payment_type = 0;
    std::string document;
    long document_day = 0;
    long long cents = 0;             ///< negative in a credit note
    long long withholding_cents = 0; ///< of a professional's fee, kept back when it is paid
};

/// What a credit note may refer to.
struct EarlierInvoice {
    long counterpart = 0, document_day = 0, vat_code = 0;
    double taxable = 0;
};

/// The entry in the making, and the memory of those made: balances, open instalments, invoices. Every entry of the demo
/// company starts with Begin and ends with one of the Store functions, which refuse what does not balance.
class DemoBooks {
  public:
    /// Open instalments of one counterpart by due day.
    using OpenInstalments = std::multimap<long, OpenInstalment>;

    /// @param before_store  told the day of each entry just before it is stored
    DemoBooks(SACommand *cmd, DemoRandom *random, std::function<void(long)> before_store);

    SACommand *Command() const { return cmd_; }
    DemoRandom &Random() { return *random_; }
    PNOTA &Entry() { return entry_; }

    /// An empty entry of that causale and registration day, document date the same.
    PNOTA &Begin(long causale, long day);

    /// @throws std::logic_error when the demo company has no such counterpart
    void TakeCounterpart(long code);

    /// Fills a VAT line: the amount is the taxable one, in receipts VAT included.
    /// @throws std::logic_error when the register does not admit the code
    void TakeVatLine(std::size_t line, long code, double amount);

    /// Now and then divides the first cost or revenue row among cost centres, or adds a note.
    void TakeExtras();

    /// @throws std::logic_error when the entry does not balance, SAException; then nothing is stored
    void Store();
    /// Stores with the instalments of the terms. @param withholding_cents  kept back from the first of them
    void StoreInvoice(long long withholding_cents = 0);

    /// Dare minus Avere of an account so far, in cents.
    long long Balance(const AccountKey &account) const;

    std::map<long, OpenInstalments> &Open(long side) { return open_[static_cast<std::size_t>(side)]; }
    const std::vector<EarlierInvoice> &InvoicesFor(long credit_causale) { return invoices_[credit_causale]; }
    /// Later credit notes of that causale may refer to the entry just stored.
    void RememberInvoice(long credit_causale);

    std::string NextSaleNumber();
    std::string NextPurchaseNumber(long supplier);
    /// Between the day given and the latest document of the supplier, so that his numbers follow his dates.
    long NextPurchaseDay(long supplier, long earliest_day, long registration_day);

  private:
    struct SupplierNumbers {
        long last = 0, last_day = 0;
    };

    void RememberInstalments(long long withholding_cents);

    SACommand *cmd_;
    DemoRandom *random_;
    std::function<void(long)> before_store_;
    PNOTA blank_, entry_; ///< one record for all entries: with its hundred rows it is large
    std::map<std::array<long, 3>, long long> balances_;
    std::array<std::map<long, OpenInstalments>, 2> open_;
    std::map<long, std::vector<EarlierInvoice>> invoices_; ///< by causale of the credit note, the latest of them
    std::map<long, SupplierNumbers> suppliers_;
    long sales_ = 0;
};
