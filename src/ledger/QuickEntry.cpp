#include "ledger/QuickEntry.h"

#include "ledger/VatLines.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/VatCodes.h"

namespace {

long LastSingleCode(SACommand *cmd, const PNOTA &entry, bool of_counterpart)
{
    SACommand query(cmd->Connection(),
                    std::string("SELECT pno_iva_0 FROM admin.pnota1 WHERE pno_cau = :cau AND pno_iva_0 > 0 AND "
                                "COALESCE(pno_iva_1, 0) = 0") +
                        (of_counterpart ? " AND pno_rel = :rel AND pno_cli_for = :codclf" : "") +
                        " ORDER BY pno_data DESC, pno_codice DESC LIMIT 1");
    query.Param("cau").setAsLong(entry.pno_cau);
    if (of_counterpart) {
        query.Param("rel").setAsLong(entry.pno_rel);
        query.Param("codclf").setAsLong(entry.pno_cli_for);
    }
    query.Execute();
    return query.FetchNext() ? query.Field("pno_iva_0").asLong() : 0;
}

} // namespace

long UsualVatCode(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_cau == 0) return 0;
    CommandScope scope(cmd);
    const long own =
        entry.pno_rel == kNoCounterpart || entry.pno_cli_for == 0 ? 0 : LastSingleCode(scope.get(), entry, true);
    return own != 0 ? own : LastSingleCode(scope.get(), entry, false);
}

double TaxableOfGross(SACommand *cmd, const PNOTA &entry, long code, double gross)
{
    CODIVA record;
    if (!sqliva.Search(cmd, code, &record)) return 0;
    const VatTreatment treatment = TreatmentOf(entry.pno_reg, record.iva_tip);
    const bool has_rate = treatment == VatTreatment::RateAndShare || treatment == VatTreatment::RateOnly;
    const bool is_added =
        has_rate && entry.pno_reg != kReceipts && entry.pno_reg != kEuSales && record.iva_tip != kVatReverseChargeOwn;
    return is_added ? Round(gross / (record.iva_aliq / 100 + 1), 2) : Round(gross, 2);
}
