#include "tarvolumera/JournalTotals.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/VatCodes.h"

#include <algorithm>
#include <cmath>

namespace {

bool IsReverseCharge(long kind)
{
    return kind == kVatReverseChargeOwn || kind == kVatReverseCharge;
}

/// Tax of the lines for the row on the purchase VAT account. In a sales register only what the seller himself must
/// account for in reverse charge is met there.
double PurchaseVat(const PNOTA &entry)
{
    const bool purchase = IsPurchaseRegister(entry.pno_reg);
    long long cents = 0;
    for (const PNOTA_IVA &line : entry.iva) {
        if (purchase || IsReverseCharge(line.tip)) cents += ToCents(DeductibleTax(line.imposta, line.tip, line.ind));
    }
    return FromCents(cents);
}

/// Tax of the lines for the row on a sales, receipts, suspended or EU VAT account. A purchase owes there the whole tax
/// of its reverse-charge lines (EU purchases: of all lines), also where only a part of it may be deducted.
double SalesVat(const PNOTA &entry)
{
    const bool all = entry.pno_reg != kPurchases;
    long long cents = 0;
    for (const PNOTA_IVA &line : entry.iva) {
        if (all || IsReverseCharge(line.tip)) cents += ToCents(line.imposta);
    }
    return FromCents(cents);
}

/// Puts a signed value into a row: negative values stand positive on the other side of the row's own.
void SetRowValue(PNOTA_RIGA *row, double value)
{
    if (row->row_base.empty()) row->row_base = row->IsAvere() ? "A" : "D";
    const bool dare = (row->row_base == "D") == (value >= 0);
    row->row_tipo = dare ? "D" : "A";
    row->row_importo = std::fabs(Round(value, 2));
}

/// Gives the row what balances the entry; an entry that already balances leaves it empty on its own side.
void BalanceWithRow(PNOTA *entry, PNOTA_RIGA *balancing)
{
    long long others = 0;
    for (const PNOTA_RIGA &row : entry->righe) {
        if (row.InUse() && &row != balancing) others += ToCents(row.Signed());
    }
    if (balancing->row_base.empty()) balancing->row_base = balancing->IsAvere() ? "A" : "D";
    const double dare = FromCents(-others);
    SetRowValue(balancing, balancing->row_base == "D" ? dare : -dare);
}

void RecalcAutomaticRows(PNOTA *entry, const DITTE &company, const FLAG &settings)
{
    const AccountKey purchase_vat = settings.PurchaseVat();
    const std::array<AccountKey, 4> sales_vat = {settings.SalesVat(), settings.ReceiptsVat(), settings.SuspendedVat(),
                                                 settings.EuVat()};
    std::array<PNOTA_RIGA *, 2> others{}; // the first two that are neither counterpart nor VAT
    std::size_t other_count = 0;
    bool counterpart_done = false, purchase_done = false, sales_done = false;
    const auto is_sales_vat = [&](const AccountKey &account) {
        return std::any_of(sales_vat.begin(), sales_vat.end(),
                           [&](const AccountKey &vat) { return vat.IsSet() && vat == account; });
    };
    for (PNOTA_RIGA &row : entry->righe) {
        if (!row.InUse() || row.row_auto == 0) continue;
        if (MasterRelation(company, row.row_mas) != kNoCounterpart) {
            if (!counterpart_done) SetRowValue(&row, entry->pno_tot_doc);
            counterpart_done = true;
        } else if (purchase_vat.IsSet() && row.Account() == purchase_vat) {
            if (!purchase_done) SetRowValue(&row, PurchaseVat(*entry));
            purchase_done = true;
        } else if (is_sales_vat(row.Account())) {
            if (!sales_done) SetRowValue(&row, SalesVat(*entry));
            sales_done = true;
        } else if (other_count < others.size()) {
            others[other_count++] = &row;
        }
    }
    if (other_count == 0) return;
    // Receipts have no counterpart: the cash row stands for it and takes the total, the next one balances.
    const bool first_is_counterpart = !counterpart_done && other_count == 2;
    if (first_is_counterpart) SetRowValue(others[0], entry->pno_tot_doc);
    BalanceWithRow(entry, first_is_counterpart ? others[1] : others[0]);
}

} // namespace

void RecalcVatTotals(PNOTA *entry, const TotalsAdjustment &adjustment)
{
    long long taxable = 0, tax = 0, exempt = 0, non_taxable = 0, outside = 0;
    for (const PNOTA_IVA &line : entry->iva) {
        tax += ToCents(line.imposta);
        switch (line.tip) {
        case kVatExempt:
            exempt += ToCents(line.impo);
            break;
        case kVatNonTaxable:
        case kVatDeclarationOfIntent:
            non_taxable += ToCents(line.impo);
            break;
        case kVatNotSubject:
        case kVatOutsideField:
        case kVatExcluded:
            outside += ToCents(line.impo);
            break;
        default:
            taxable += ToCents(line.impo);
            break;
        }
    }
    entry->pno_tot_imp = FromCents(taxable + ToCents(adjustment.taxable));
    entry->pno_tot_iva = FromCents(tax + ToCents(adjustment.tax));
    entry->pno_tot_esente = FromCents(exempt);
    entry->pno_tot_non_imp = FromCents(non_taxable + ToCents(adjustment.non_taxable));
    entry->pno_tot_non_82 = FromCents(outside);
}

double OwedForLine(const PNOTA_IVA &line)
{
    return line.tip == kVatReverseChargeOwn ? line.impo : line.impo + line.imposta;
}

void RecalcTotals(PNOTA *entry, const DITTE &company, const FLAG &settings, int mode,
                  const TotalsAdjustment &adjustment)
{
    RecalcVatTotals(entry, adjustment);
    if (entry->pno_cau_iva == 1 && mode == kVatLinesChanged) {
        long long owed = ToCents(adjustment.document);
        for (const PNOTA_IVA &line : entry->iva) owed += ToCents(OwedForLine(line));
        entry->pno_tot_doc = FromCents(owed);
    }
    if (entry->pno_cau_iva != 1 || mode == kVatLinesChanged) RecalcAutomaticRows(entry, company, settings);
    Squadratura(entry);
}

bool Squadratura(PNOTA *entry)
{
    long long dare = 0, avere = 0;
    for (const PNOTA_RIGA &row : entry->righe) {
        if (!row.InUse()) continue;
        if (row.IsDare()) dare += ToCents(row.row_importo);
        if (row.IsAvere()) avere += ToCents(row.row_importo);
    }
    entry->pno_dare = FromCents(dare);
    entry->pno_avere = FromCents(avere);
    entry->pno_tot_squ = FromCents(dare - avere);
    return dare != avere;
}

bool CheckAnalitica(const PNOTA &entry, int *row)
{
    std::array<long long, kEntryRows> split{};
    std::array<bool, kEntryRows> has_split{};
    *row = 0;
    if (entry.centri.size() > kCostCentreLinesMax) return false;
    for (const PNOTA_CENTRO &line : entry.centri) {
        if (line.pcc_riga < 1 || line.pcc_riga > static_cast<long>(kEntryRows)) return false;
        const auto index = static_cast<std::size_t>(line.pcc_riga - 1);
        if (!entry.righe[index].InUse()) return false;
        split[index] += ToCents(line.pcc_importo);
        has_split[index] = true;
        if (line.pcc_cdc == 0) {
            *row = static_cast<int>(line.pcc_riga);
            return false;
        }
    }
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        if (!has_split[i] || split[i] == ToCents(entry.righe[i].row_importo)) continue;
        *row = static_cast<int>(i + 1);
        return false;
    }
    return true;
}
