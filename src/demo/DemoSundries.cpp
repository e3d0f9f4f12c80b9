#include "demo/DemoSundries.h"

#include "ledger/EntryEditing.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr AccountKey kBank{170, 1, 1}, kCash{175, 1, 1}, kEffects{140, 1, 2}, kLoan{230, 1, 1}, kWages{330, 1, 1},
    kContributions{330, 1, 2}, kNetWages{270, 2, 1}, kStampDuty{360, 1, 1}, kTaxOfficeVat{260, 2, 1};
constexpr long kCausaleTransfer = 61;
constexpr std::size_t kNoBalancingRow = kEntryRows;

/// The amounts of the causale's rows in their order, in cents. Zero empties a row, a negative one changes sides.
using Amounts = std::vector<long long>;

/// Types the amounts; the row behind them takes what balances the entry, as on leaving its empty cell.
void TakeAmounts(DemoBooks *books, const Amounts &amounts, std::size_t balancing = kNoBalancingRow)
{
    PNOTA &entry = books->Entry();
    for (std::size_t i = 0; i < amounts.size(); ++i) {
        PNOTA_RIGA &row = entry.righe[i];
        if (amounts[i] == 0 && i != balancing)
            row = PNOTA_RIGA{};
        else if (amounts[i] < 0)
            row.row_tipo = row.IsDare() ? "A" : "D";
        row.row_importo = FromCents(std::llabs(amounts[i]));
    }
    sqlpno.Squadratura(books->Command(), &entry);
    if (balancing != kNoBalancingRow) LeaveRowAmount(books->Command(), &entry, balancing);
}

/// A whole entry: the causale's rows with those amounts, the last row balances.
bool BookAmounts(DemoBooks *books, const PlannedEntry &planned, const Amounts &amounts)
{
    if (std::ranges::all_of(amounts, [](long long cents) { return cents == 0; })) return false;
    books->Begin(planned.model->causale, planned.day);
    TakeAmounts(books, amounts, amounts.size());
    books->TakeExtras();
    books->Store();
    return true;
}

/// A whole entry of a causale whose automatic rows follow the total. The other one, if any, takes the same amount.
bool BookTotal(DemoBooks *books, const PlannedEntry &planned, long long cents)
{
    if (cents <= 0) return false;
    PNOTA &entry = books->Begin(planned.model->causale, planned.day);
    for (PNOTA_RIGA &row : entry.righe) {
        if (row.InUse() && row.row_auto == 0) row.row_importo = FromCents(cents);
    }
    EnterDocumentTotal(books->Command(), &entry, FromCents(cents));
    books->Store();
    return true;
}

/// A transfer has no rows of its own: both are typed.
bool BookTransfer(DemoBooks *books, long day, const AccountKey &dare, const AccountKey &avere, long long cents,
                  const char *description)
{
    PNOTA &entry = books->Begin(kCausaleTransfer, day);
    entry.pno_desc = description;
    for (std::size_t i = 0; i < 2; ++i) {
        const AccountKey &account = i == 0 ? dare : avere;
        PNOTA_RIGA &row = entry.righe[i];
        row.row_mas = account.mas;
        row.row_con = account.con;
        row.row_sot = account.sot;
        row.row_tipo = i == 0 ? "D" : "A";
        LeaveRowCausale(&entry, i);
        LeaveRowDocument(&entry, i);
    }
    TakeAmounts(books, {cents}, 1);
    books->Store();
    return true;
}

/// What stands in Avere of an account, 0 when it stands in Dare.
long long Owed(const DemoBooks &books, const AccountKey &account)
{
    return std::max(0LL, -books.Balance(account));
}

bool BookDeposit(DemoBooks *books, const PlannedEntry &planned)
{
    constexpr long long kNote = 50'00, kTill = 200'00; // notes of fifty; the till keeps its change
    const long long spare = books->Balance(kCash) - kTill;
    return BookTotal(books, planned, spare / kNote * kNote);
}

bool BookInterest(DemoBooks *books, const PlannedEntry &planned)
{
    const long long gross = ToCents(books->Random().Amount(5, 300)), withheld = gross * 26 / 100;
    return BookAmounts(books, planned, {gross - withheld, withheld});
}

/// A loan is taken up when there is none, else an instalment of it is paid.
bool BookLoan(DemoBooks *books, const PlannedEntry &planned)
{
    const long long owed = Owed(*books, kLoan);
    if (owed == 0)
        return BookTransfer(books, planned.day, kBank, kLoan, books->Random().Between(5, 25) * 10'000'00LL,
                            "Erogazione mutuo per ampliamento attività");
    const long long capital = std::min(owed, ToCents(books->Random().Amount(1500, 4000)));
    return BookAmounts(books, planned, {capital, owed * 4 / 1200});
}

bool BookStamps(DemoBooks *books, const PlannedEntry &planned)
{
    const long long cents = books->Random().Between(1, 10) * 16'00LL;
    return BookTransfer(books, planned.day, kStampDuty, books->Balance(kCash) >= cents ? kCash : kBank, cents,
                        "Marche da bollo per la contabilità");
}

bool BookWages(DemoBooks *books, const PlannedEntry &planned)
{
    const long long gross = ToCents(books->Random().Amount(9000, 24000));
    return BookAmounts(books, planned, {gross, gross * 919 / 10000, gross * 18 / 100});
}

/// The employer's part of the contributions, on the wages for which it was not booked yet.
bool BookContributions(DemoBooks *books, const PlannedEntry &planned)
{
    const long long due = books->Balance(kWages) * 29 / 100 - books->Balance(kContributions);
    return BookAmounts(books, planned, {std::max(0LL, due)});
}

/// All that is owed to the tax office and the social security.
bool BookTaxForm(DemoBooks *books, const PlannedEntry &planned)
{
    constexpr AccountKey kEmployees{265, 1, 1}, kFreelances{265, 1, 2}, kSocialSecurity{270, 1, 1};
    return BookAmounts(books, planned,
                       {Owed(*books, kEmployees), Owed(*books, kFreelances), Owed(*books, kSocialSecurity),
                        Owed(*books, kTaxOfficeVat)});
}

/// Empties the VAT accounts into the one of the tax office. The tax in suspension waits for its payment.
bool BookVatSettlement(DemoBooks *books, const PlannedEntry &planned)
{
    const FLAG &settings = lumera_db_flag;
    Amounts amounts = {-books->Balance(settings.SalesVat()), -books->Balance(settings.ReceiptsVat()),
                       -books->Balance(settings.EuVat()), books->Balance(settings.PurchaseVat())};
    if (std::ranges::all_of(amounts, [](long long cents) { return cents == 0; })) return false;
    amounts.push_back(amounts[0] + amounts[1] + amounts[2] - amounts[3]); // a credit stands on the other side
    books->Begin(planned.model->causale, planned.day);
    TakeAmounts(books, amounts);
    books->Store();
    return true;
}

} // namespace

bool BookSundry(DemoBooks *books, const PlannedEntry &planned)
{
    DemoRandom &random = books->Random();
    switch (planned.model->job) {
    case DemoJob::EffectsCredited:
        return BookTotal(books, planned, books->Balance(kEffects));
    case DemoJob::CashDeposit:
        return BookDeposit(books, planned);
    case DemoJob::CashWithdrawal:
        return BookTotal(books, planned, random.Between(2, 10) * 50'00LL);
    case DemoJob::BankTransfer:
        return BookAmounts(books, planned, {random.Between(2, 20) * 500'00LL});
    case DemoJob::BankCharges:
        return BookAmounts(books, planned, {ToCents(random.Amount(2, 60))});
    case DemoJob::BankInterest:
        return BookInterest(books, planned);
    case DemoJob::Loan:
        return BookLoan(books, planned);
    case DemoJob::Stamps:
        return BookStamps(books, planned);
    case DemoJob::Wages:
        return BookWages(books, planned);
    case DemoJob::Contributions:
        return BookContributions(books, planned);
    case DemoJob::WagePayment:
        return BookAmounts(books, planned, {Owed(*books, kNetWages)});
    case DemoJob::TaxForm:
        return BookTaxForm(books, planned);
    case DemoJob::VatSettlement:
        return BookVatSettlement(books, planned);
    case DemoJob::VatPayment:
        return BookAmounts(books, planned, {Owed(*books, kTaxOfficeVat)});
    default:
        return false;
    }
}
