#include "demo/DemoInvoices.h"

#include "ledger/EntryEditing.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>

namespace {

constexpr long kExcludedArt15 = 100, kOrdinaryRate = 22; // VAT codes
constexpr long kCausaleSplitPayment = 7, kCausaleProfessional = 27;
constexpr long kTermsCompensation = 8;
constexpr long kTermsAgreed[] = {14, 16, 17, 24, 28, 53, 57}; ///< now and then instead of the counterpart's own
constexpr long kPostDays = 14;                                ///< a supplier's invoice takes so long at most
constexpr long long kWithholdingPerCent = 20;

bool IsVatAccount(const AccountKey &account)
{
    const FLAG &settings = lumera_db_flag;
    const std::array<AccountKey, 5> all = {settings.PurchaseVat(), settings.SalesVat(), settings.ReceiptsVat(),
                                           settings.SuspendedVat(), settings.EuVat()};
    return std::ranges::find(all, account) != all.end();
}

/// The causale proposes a cost or revenue account; the bookkeeper types the one that fits.
void TakeAccount(PNOTA *entry, const AccountKey &account)
{
    if (!account.IsSet()) return;
    for (PNOTA_RIGA &row : entry->righe) {
        if (!row.InUse() || row.row_mas == lumera_db_impo.dit_mas_cli || row.row_mas == lumera_db_impo.dit_mas_for ||
            IsVatAccount(row.Account()))
            continue;
        row.row_mas = account.mas;
        row.row_con = account.con;
        row.row_sot = account.sot;
        return;
    }
}

void TakeDocument(DemoBooks *books)
{
    PNOTA &entry = books->Entry();
    if (!IsPurchaseRegister(entry.pno_reg)) return EnterDocumentNumber(&entry, books->NextSaleNumber());
    const long new_year = DateToJulian(1, 1, Year(entry.pno_data));
    entry.pno_data_doc =
        books->NextPurchaseDay(entry.pno_cli_for, std::max(entry.pno_data - kPostDays, new_year), entry.pno_data);
    EnterDocumentNumber(&entry, books->NextPurchaseNumber(entry.pno_cli_for));
}

void TakeVatLines(DemoBooks *books, const DemoModel &model)
{
    DemoRandom &random = books->Random();
    const long code = random.Pick(model.vat_codes);
    std::size_t line = 0;
    books->TakeVatLine(line++, code, random.Amount(model.euro_min, model.euro_max));
    const auto other = std::ranges::find_if(model.vat_codes, [&](long candidate) { return candidate != code; });
    if (other != model.vat_codes.end() && random.Chance(100))
        books->TakeVatLine(line++, *other, random.Amount(model.euro_min, model.euro_max));
    // Freight or postage paid for the customer.
    if (code == kOrdinaryRate && random.Chance(60)) books->TakeVatLine(line, kExcludedArt15, random.Amount(4, 40));
}

/// The tax is owed by the public body itself: the causale's last two rows take it off the customer again.
void TakeTaxOffCustomer(PNOTA *entry)
{
    entry->pno_split_payment = 1;
    for (PNOTA_RIGA &row : entry->righe) {
        if (row.InUse() && row.row_auto == 0) row.row_importo = entry->pno_tot_iva;
    }
}

long long Withholding(const PNOTA &entry)
{
    // A professional under the flat-rate scheme invoices without VAT and without withholding.
    if (entry.pno_cau != kCausaleProfessional || TestIfZero(entry.pno_tot_iva)) return 0;
    return ToCents(entry.pno_tot_imp) * kWithholdingPerCent / 100;
}

} // namespace

void BookInvoice(DemoBooks *books, const PlannedEntry &planned)
{
    const DemoModel &model = *planned.model;
    PNOTA &entry = books->Begin(model.causale, planned.day);
    books->TakeCounterpart(books->Random().Pick(model.counterparts));
    TakeDocument(books);
    TakeAccount(&entry, model.account);
    TakeVatLines(books, model);
    if (model.causale == kCausaleSplitPayment) TakeTaxOffCustomer(&entry);
    if (books->Random().Chance(50))
        EnterTerms(books->Command(), &entry, books->Random().Pick(std::to_array(kTermsAgreed)));
    books->TakeExtras();
    books->StoreInvoice(Withholding(entry));
    if (model.credit_causale != 0) books->RememberInvoice(model.credit_causale);
}

bool BookCreditNote(DemoBooks *books, const PlannedEntry &planned)
{
    const long causale = planned.model->causale;
    if (books->InvoicesFor(causale).empty()) return false;
    const EarlierInvoice invoice = books->Random().Pick(books->InvoicesFor(causale));
    PNOTA &entry = books->Begin(causale, planned.day);
    books->TakeCounterpart(invoice.counterpart);
    TakeDocument(books);
    entry.pno_data_ret = invoice.document_day;
    const double credited = -Round(invoice.taxable * static_cast<double>(books->Random().Between(5, 30)) / 100, 2);
    books->TakeVatLine(0, invoice.vat_code, credited);
    EnterTerms(books->Command(), &entry, kTermsCompensation);
    books->StoreInvoice();
    return true;
}

void BookReceipts(DemoBooks *books, const PlannedEntry &planned)
{
    const DemoModel &model = *planned.model;
    DemoRandom &random = books->Random();
    books->Begin(model.causale, planned.day);
    std::size_t line = 0;
    for (const long code : model.vat_codes) {
        if (line == 0)
            books->TakeVatLine(line++, code, random.Amount(model.euro_min, model.euro_max));
        else if (random.Chance(250))
            books->TakeVatLine(line++, code, random.Amount(10, model.euro_min));
    }
    books->TakeExtras();
    books->Store();
}
