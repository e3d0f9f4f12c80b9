#pragma once

#include "demo/DemoRandom.h"
#include "tarvolumera/Company.h"

#include <vector>

/// What kind of work an entry of the demo books is.
enum class DemoJob {
    Invoice,    ///< purchase or sale, by its causale
    CreditNote, ///< for a part of an earlier invoice
    Receipts,
    Payment,    ///< of a supplier's instalments that are due
    Collection, ///< of a customer's
    EffectsCredited,
    CashDeposit,
    CashWithdrawal,
    BankTransfer,
    BankCharges,
    BankInterest,
    Loan,
    Stamps,
    Wages,
    Contributions,
    WagePayment,
    TaxForm,
    VatSettlement,
    VatPayment
};

/// The day of the month on which a kind of work is done; 1 to 28 is that day.
inline constexpr int kAnyDay = 0, kMonthEnd = -1, kQuarterEnd = -2;

/// A model of entries that resemble each other but for counterpart, date and amounts.
struct DemoModel {
    DemoJob job = DemoJob::Invoice;
    long share = 0; ///< per mille of all entries
    long causale = 0;
    std::vector<long> counterparts;  ///< codes of the demo company's suppliers or customers
    std::vector<long> vat_codes;     ///< one of them is drawn; the same one twice is drawn twice as often
    long euro_min = 0, euro_max = 0; ///< taxable amount, in receipts VAT included
    AccountKey account;              ///< cost or revenue instead of the causale's own; unset = the causale's
    long credit_causale = 0;         ///< of the credit notes for such an invoice; 0 = none are made
    int habit = kAnyDay;
};

struct PlannedEntry {
    long day = 0; ///< day number of the registration
    const DemoModel *model = nullptr;
};

/// The models that stand for what a company without anything due would do instead: an ordinary purchase, an ordinary
/// sale, charges of its bank.
const DemoModel &UsualPurchase();
const DemoModel &UsualSale();
const DemoModel &UsualBankCharges();

/// Which entries are made on which days, oldest first: the shares of the models as exactly as the number allows, spread
/// at random over the working days (over all days where there is none).
/// @param entries  0 or more   @param first_day, last_day  day numbers, included
std::vector<PlannedEntry> PlanEntries(long entries, long first_day, long last_day, DemoRandom *random);
