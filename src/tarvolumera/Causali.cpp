#include "tarvolumera/Causali.h"

CPSQLcac sqlcac;
CPSQLcar sqlcar;

CPSQLcac::CPSQLcac()
    : CCodeTable(
          {"caucont1",
           {LUMERA_COLUMN(CAUCONT, cac_codice, kKey), LUMERA_PLAIN(CAUCONT, cac_desc), LUMERA_PLAIN(CAUCONT, cac_reg),
            LUMERA_PLAIN(CAUCONT, cac_rel), LUMERA_PLAIN(CAUCONT, cac_iva), LUMERA_PLAIN(CAUCONT, cac_iva_sosp),
            LUMERA_CODE(CAUCONT, cac_sez), LUMERA_PLAIN(CAUCONT, cac_tipo_documento),
            LUMERA_PLAIN(CAUCONT, cac_nota_variazione), LUMERA_PLAIN(CAUCONT, cac_allegati)}})
{
}

CPSQLcar::CPSQLcar()
    : CTable({"caucontr",
              {LUMERA_COLUMN(CAUCONT_RIGA, car_cau, kKey), LUMERA_COLUMN(CAUCONT_RIGA, car_idx, kKey),
               LUMERA_PLAIN(CAUCONT_RIGA, car_mas), LUMERA_PLAIN(CAUCONT_RIGA, car_con),
               LUMERA_PLAIN(CAUCONT_RIGA, car_sot), LUMERA_PLAIN(CAUCONT_RIGA, car_tipo),
               LUMERA_PLAIN(CAUCONT_RIGA, car_auto)}})
{
}

bool CPSQLcac::Search(SACommand *cmd, long code, CAUCONT *record, bool flag) const
{
    CommandScope scope(cmd);
    if (!CCodeTable::Search(scope.get(), code, record, flag)) return false;
    sqlcar.ForEach(
        scope.get(), " WHERE car_cau = :causale ORDER BY car_idx",
        [&](SACommand &query) { query.Param("causale").setAsLong(code); },
        [&](const CAUCONT_RIGA &row) {
            if (row.car_idx >= 1 && row.car_idx <= static_cast<long>(record->righe.size()))
                record->righe[static_cast<std::size_t>(row.car_idx - 1)] = row;
            return true;
        });
    return true;
}

void CPSQLcac::SqlTransaction(SACommand *cmd, int operation, CAUCONT *record) const
{
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    CTable::SqlTransaction(scope.get(), operation, record);
    if (operation == kUpdate) {
        SACommand clear(scope->Connection(), "DELETE FROM admin.caucontr WHERE car_cau = :causale");
        clear.Param("causale").setAsLong(record->cac_codice);
        clear.Execute();
    }
    for (std::size_t i = 0; operation != kDelete && i < record->righe.size(); ++i) {
        CAUCONT_RIGA &row = record->righe[i];
        row.car_cau = record->cac_codice;
        row.car_idx = static_cast<long>(i + 1);
        if (row.car_mas != 0) sqlcar.SqlTransaction(scope.get(), kInsert, &row);
    }
    transaction.Commit();
}
