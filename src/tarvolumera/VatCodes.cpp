#include "tarvolumera/VatCodes.h"

#include "tarvodlg/base/Numbers.h"

CPSQLiva sqliva;

CPSQLiva::CPSQLiva()
    : CCodeTable({"codiva",
                  {LUMERA_COLUMN(CODIVA, iva_codice, kKey), LUMERA_PLAIN(CODIVA, iva_desc),
                   LUMERA_PLAIN(CODIVA, iva_aliq), LUMERA_PLAIN(CODIVA, iva_tip), LUMERA_PLAIN(CODIVA, iva_inded),
                   LUMERA_PLAIN(CODIVA, iva_aliq_default), LUMERA_PLAIN(CODIVA, iva_natura)}})
{
}

bool CPSQLiva::SearchByRate(SACommand *cmd, double rate, long kind, CODIVA *record) const
{
    *record = CODIVA{};
    CommandScope scope(cmd);
    SACommand query(
        scope->Connection(),
        "SELECT * FROM admin.codiva WHERE iva_aliq = :aliquota AND iva_tip = :tipo ORDER BY iva_aliq_default DESC, "
        "iva_codice");
    query.Param("aliquota").setAsDouble(rate);
    query.Param("tipo").setAsLong(kind);
    return FetchRecord(&query, record);
}

double DeductibleTax(double tax, long kind, double non_deductible_per_cent)
{
    if (kind == kVatNonDeductible) return 0.0;
    return Round(tax * (100.0 - non_deductible_per_cent) / 100.0, 2);
}
