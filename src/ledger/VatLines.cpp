#include "ledger/VatLines.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/VatCodes.h"

#include <algorithm>
#include <initializer_list>

namespace {

bool IsOneOf(long kind, std::initializer_list<long> kinds)
{
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

/// Net first where the amount was typed VAT included, then the tax, except where the register has none.
void ComputeAmounts(long vat_register, PNOTA_IVA *line)
{
    if (vat_register == kReceipts && !TestIfZero(line->aliq))
        line->impo = Round(line->impo / (line->aliq / 100 + 1), 2);
    if (vat_register != kEuSales) line->imposta = Round(line->aliq / 100 * line->impo, 2);
}

} // namespace

VatTreatment TreatmentOf(long vat_register, long kind)
{
    switch (vat_register) {
    case kPurchases:
    case kEuPurchases:
        if (IsOneOf(kind, {1, 8, 9, 12, 13, 14})) return VatTreatment::RateAndShare;
        if (kind == 5) return VatTreatment::RateOnly;
        if (IsOneOf(kind, {2, 3, 4, 6, 7, 11})) return VatTreatment::NoRate;
        return VatTreatment::Cleared;
    case kSales:
        // Kind 11 keeps its rate here and kind 6 is not admitted: irregular, and meant so.
        if (IsOneOf(kind, {1, 5, 8, 9, 11, 13, 14})) return VatTreatment::RateOnly;
        if (IsOneOf(kind, {2, 3, 4, 7})) return VatTreatment::NoRate;
        return VatTreatment::Cleared;
    case kReceipts:
        if (IsOneOf(kind, {1, 8, 9, 13, 14})) return VatTreatment::RateOnly;
        if (IsOneOf(kind, {2, 3, 4, 7, 10})) return VatTreatment::NoRate;
        return VatTreatment::Cleared;
    case kSuspendedSales:
        if (IsOneOf(kind, {1, 5, 8, 9, 13, 14})) return VatTreatment::RateOnly;
        if (IsOneOf(kind, {2, 3, 4, 7, 11})) return VatTreatment::NoRate;
        return VatTreatment::Cleared;
    case kEuSales:
        // The only sales register that keeps the non-deductible per cent.
        if (IsOneOf(kind, {1, 8, 9, 13, 14})) return VatTreatment::RateAndShare;
        if (kind == 5) return VatTreatment::RateOnly;
        if (IsOneOf(kind, {2, 3, 4, 7, 11})) return VatTreatment::NoRate;
        return VatTreatment::Cleared;
    case kJournalOnly:
        return VatTreatment::Cleared;
    default:
        return VatTreatment::Untouched;
    }
}

void ComputeVatLine(SACommand *cmd, PNOTA *entry, std::size_t line)
{
    ComputeAmounts(entry->pno_reg, &entry->iva.at(line));
    sqlpno.RecalcPNota(cmd, entry, 1, 0, 0, 0, 0);
}

void EnterVatCode(SACommand *cmd, PNOTA *entry, std::size_t line, long code)
{
    CODIVA record;
    sqliva.Search(cmd, code, &record);
    PNOTA_IVA &target = entry->iva.at(line);
    switch (TreatmentOf(entry->pno_reg, record.iva_tip)) {
    case VatTreatment::Untouched:
        break;
    case VatTreatment::Cleared: {
        const double tax = target.imposta; // recomputed below, except in register 7, which leaves it alone
        target = PNOTA_IVA{};
        target.imposta = tax;
        break;
    }
    case VatTreatment::RateAndShare:
    case VatTreatment::RateOnly:
    case VatTreatment::NoRate: {
        const VatTreatment treatment = TreatmentOf(entry->pno_reg, record.iva_tip);
        target.iva = record.iva_codice;
        target.tip = record.iva_tip;
        target.aliq = treatment == VatTreatment::NoRate ? 0 : record.iva_aliq;
        target.ind = treatment == VatTreatment::RateAndShare ? record.iva_inded : 0;
        break;
    }
    }
    ComputeVatLine(cmd, entry, line);
}
