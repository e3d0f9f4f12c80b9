#include "demo/DemoBooks.h"

#include "ledger/EntryEditing.h"
#include "ledger/VatLines.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::size_t kInvoicesRemembered = 100;
/// Per mille of the instalments: what falls due and stays open, for reminders and interest on late payment.
constexpr long kNeverPaidByCustomers = 50, kNeverPaidToSuppliers = 15;
constexpr long kCostCentres[] = {10, 20, 30, 40, 50, 60};
constexpr const char *kNotes[] = {
    "Già verificato con il responsabile di reparto", "Consegna a metà: il resto è atteso il mese prossimo",
    "Priorità alta, perché sollecitato due volte",   "Qualità contestata, in attesa di nota di credito",
    "Pagamento più spese come da accordo verbale",   "Attività di manutenzione nella città di Parma",
    "Società del gruppo: vedere contratto quadro",   "Sarà rinnovato l'anno prossimo"};

/// The first row with an amount on a cost or revenue account; they stand between the masters 300 and 899.
PNOTA_RIGA *FirstEconomicRow(PNOTA *entry)
{
    const auto found = std::ranges::find_if(entry->righe, [](const PNOTA_RIGA &row) {
        return row.row_mas >= 300 && row.row_mas < 900 && !TestIfZero(row.row_importo);
    });
    return found == entry->righe.end() ? nullptr : &*found;
}

void DivideAmongCentres(PNOTA *entry, DemoRandom *random)
{
    const PNOTA_RIGA *row = FirstEconomicRow(entry);
    if (row == nullptr) return;
    const long index = static_cast<long>(row - entry->righe.data()) + 1;
    long long rest = ToCents(row->row_importo);
    const long parts = random->Between(1, 3), first = random->Between(0, std::size(kCostCentres) - 1);
    for (long part = 1; part <= parts && rest > 0; ++part) {
        const long long cents = part == parts ? rest : rest * random->Between(20, 70) / 100;
        if (cents == 0) continue;
        PNOTA_CENTRO line;
        line.pcc_riga = index;
        line.pcc_cdc = kCostCentres[static_cast<std::size_t>(first + part) % std::size(kCostCentres)];
        line.pcc_importo = FromCents(cents);
        entry->centri.push_back(line);
        rest -= cents;
    }
}

/// Under split payment the customer pays the taxable amount alone; his tax goes straight to the tax office.
void LeaveOutTax(const PNOTA &entry, InstalmentProposal *proposal)
{
    const double share = entry.pno_tot_imp / entry.pno_tot_doc;
    long long rest = ToCents(entry.pno_tot_imp);
    for (Instalment &row : proposal->rows) {
        row.amount = &row == &proposal->rows.back() ? FromCents(rest) : Round(row.amount * share, 2);
        rest -= ToCents(row.amount);
    }
    proposal->total = entry.pno_tot_imp;
}

} // namespace

DemoBooks::DemoBooks(SACommand *cmd, DemoRandom *random, std::function<void(long)> before_store)
    : cmd_(cmd), random_(random), before_store_(std::move(before_store))
{
    sqlpno.Blank(cmd_, &blank_);
}

PNOTA &DemoBooks::Begin(long causale, long day)
{
    entry_ = blank_;
    entry_.pno_data = day;
    EnterCausale(cmd_, &entry_, causale);
    if (entry_.pno_cau != causale) throw std::logic_error(fmt::format("demo entry: no causale {}", causale));
    entry_.pno_data_doc = day;
    return entry_;
}

void DemoBooks::TakeCounterpart(long code)
{
    if (!EnterCounterpart(cmd_, &entry_, code))
        throw std::logic_error(fmt::format("demo entry: no counterpart {} of kind {}", code, entry_.pno_rel));
}

void DemoBooks::TakeVatLine(std::size_t line, long code, double amount)
{
    EnterVatCode(cmd_, &entry_, line, code);
    if (entry_.iva[line].iva != code)
        throw std::logic_error(fmt::format("demo entry: VAT code {} refused by register {}", code, entry_.pno_reg));
    entry_.iva[line].impo = amount;
    ComputeVatLine(cmd_, &entry_, line);
}

void DemoBooks::TakeExtras()
{
    if (random_->Chance(50)) DivideAmongCentres(&entry_, random_);
    if (random_->Chance(40)) entry_.pno_desc = kNotes[random_->Between(0, std::size(kNotes) - 1)];
}

void DemoBooks::Store()
{
    int row = 0;
    if (sqlpno.Squadratura(cmd_, &entry_) || !sqlpno.CheckAnalitica(cmd_, &entry_, &row))
        throw std::logic_error(fmt::format("demo entry: causale {} of {} does not balance, row {}, {}", entry_.pno_cau,
                                           FormatIsoDate(entry_.pno_data), row, FormatAmount(entry_.pno_tot_squ)));
    before_store_(entry_.pno_data);
    sqlpno.SqlTransaction(cmd_, kInsert, &entry_);
    for (const PNOTA_RIGA &stored : entry_.righe) {
        if (stored.InUse() && stored.row_clfo == 0)
            balances_[{stored.row_mas, stored.row_con, stored.row_sot}] += ToCents(stored.Signed());
    }
}

void DemoBooks::StoreInvoice(long long withholding_cents)
{
    Store();
    std::optional<InstalmentProposal> proposal = ProposeInstalments(cmd_, entry_);
    if (!proposal) return;
    if (entry_.pno_split_payment != 0) LeaveOutTax(entry_, &*proposal);
    if (StoreInstalments(cmd_, entry_, *proposal) > 0) RememberInstalments(withholding_cents);
}

void DemoBooks::RememberInstalments(long long withholding_cents)
{
    const long forgotten = entry_.pno_rel == kCustomer ? kNeverPaidByCustomers : kNeverPaidToSuppliers;
    const auto bind = [&](SACommand &query) { query.Param("codice").setAsLong(entry_.pno_codice); };
    OpenInstalments &open = Open(entry_.pno_rel)[entry_.pno_cli_for];
    sqlsca.ForEach(cmd_, " WHERE sca_pno = :codice ORDER BY sca_rata", bind, [&](const SCADENZE &stored) {
        if (!random_->Chance(forgotten))
            open.emplace(stored.sca_data,
                         OpenInstalment{stored.sca_num, stored.sca_data, stored.sca_tipo_pag, stored.sca_fattura.str(),
                                        stored.sca_data_fattura, ToCents(stored.sca_importo), withholding_cents});
        withholding_cents = 0;
        return true;
    });
}

long long DemoBooks::Balance(const AccountKey &account) const
{
    const auto found = balances_.find({account.mas, account.con, account.sot});
    return found == balances_.end() ? 0 : found->second;
}

void DemoBooks::RememberInvoice(long credit_causale)
{
    std::vector<EarlierInvoice> &invoices = invoices_[credit_causale];
    if (invoices.size() == kInvoicesRemembered) invoices.erase(invoices.begin());
    invoices.push_back({entry_.pno_cli_for, entry_.pno_data_doc, entry_.iva[0].iva, entry_.iva[0].impo});
}

std::string DemoBooks::NextSaleNumber()
{
    return std::to_string(++sales_);
}

std::string DemoBooks::NextPurchaseNumber(long supplier)
{
    SupplierNumbers &numbers = suppliers_[supplier];
    // He also has other customers.
    numbers.last += random_->Between(1, numbers.last == 0 ? 400 : 9);
    switch (supplier % 4) {
    case 0:
        return fmt::format("{}/A", numbers.last);
    case 1:
        return fmt::format("{}", numbers.last);
    case 2:
        return fmt::format("FT{:06}", numbers.last);
    default:
        return fmt::format("{}/{}", Year(entry_.pno_data), numbers.last);
    }
}

long DemoBooks::NextPurchaseDay(long supplier, long earliest_day, long registration_day)
{
    SupplierNumbers &numbers = suppliers_[supplier];
    numbers.last_day = random_->Between(std::clamp(numbers.last_day, earliest_day, registration_day), registration_day);
    return numbers.last_day;
}
