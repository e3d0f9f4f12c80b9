#include "tarvolumera/PSQLrow.h"

#include "tarvodlg/base/Dates.h"

CPSQLrow sqlrow;
CPSQLpcc sqlpcc;

namespace {

/// Rows carry the code of their header, and the headers are fewer.
bool HasOperation(SACommand *cmd, long date, long first, long second)
{
    if (date == 0) return false;
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT pno_codice FROM admin.pnota1 WHERE pno_operazione IN (:tipo1, :tipo2)"
                                         " AND pno_data BETWEEN :d_start AND :d_stop LIMIT 1");
    const int year = Year(date);
    query.Param("d_start").setAsDateTime(SADateTime(year, 1, 1));
    query.Param("d_stop").setAsDateTime(SADateTime(year, 12, 31));
    query.Param("tipo1").setAsLong(first);
    query.Param("tipo2").setAsLong(second);
    query.Execute();
    return query.FetchNext();
}

} // namespace

CPSQLrow::CPSQLrow()
    : CTable({"pnotaro2",
              {LUMERA_COLUMN(PNOTA_RIGA, row_codice, kKey), LUMERA_COLUMN(PNOTA_RIGA, row_idx, kKey),
               LUMERA_PLAIN(PNOTA_RIGA, row_mas), LUMERA_PLAIN(PNOTA_RIGA, row_con), LUMERA_PLAIN(PNOTA_RIGA, row_sot),
               LUMERA_PLAIN(PNOTA_RIGA, row_tipo), LUMERA_PLAIN(PNOTA_RIGA, row_base),
               LUMERA_PLAIN(PNOTA_RIGA, row_importo), LUMERA_DATE(PNOTA_RIGA, row_data),
               LUMERA_CODE(PNOTA_RIGA, row_cau), LUMERA_PLAIN(PNOTA_RIGA, row_descac),
               LUMERA_PLAIN(PNOTA_RIGA, row_n_doc), LUMERA_DATE(PNOTA_RIGA, row_d_doc),
               LUMERA_PLAIN(PNOTA_RIGA, row_sez), LUMERA_PLAIN(PNOTA_RIGA, row_rel), LUMERA_PLAIN(PNOTA_RIGA, row_clfo),
               LUMERA_PLAIN(PNOTA_RIGA, row_auto), LUMERA_PLAIN(PNOTA_RIGA, row_operazione)}})
{
}

bool CPSQLrow::CheckChiusura(SACommand *cmd, long date) const
{
    return HasOperation(cmd, date, kClosing, kProfitAndLoss);
}

bool CPSQLrow::CheckApertura(SACommand *cmd, long date) const
{
    return HasOperation(cmd, date, kOpening, kOpening);
}

CPSQLpcc::CPSQLpcc()
    : CTable({"pnotacdc",
              {LUMERA_COLUMN(PNOTA_CENTRO, pcc_pno, kKey), LUMERA_COLUMN(PNOTA_CENTRO, pcc_idx, kKey),
               LUMERA_PLAIN(PNOTA_CENTRO, pcc_riga), LUMERA_PLAIN(PNOTA_CENTRO, pcc_cdc),
               LUMERA_PLAIN(PNOTA_CENTRO, pcc_importo)}})
{
}
