#include "tarvolumera/PSQLrow.h"

#include "tarvodlg/base/Dates.h"

#include <fmt/format.h>

CPSQLrow sqlrow;
CPSQLpcc sqlpcc;

namespace {

/// Rows carry the code of their header, and the headers are fewer. The codes stand in the text: bound, PostgreSQL plans
/// for the most common one, the ordinary entry, and reads the whole journal to find none.
bool HasOperation(SACommand *cmd, long date, const char *codes)
{
    if (date == 0) return false;
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), fmt::format("SELECT pno_codice FROM admin.pnota1 WHERE pno_operazione IN ({})"
                                                     " AND pno_data BETWEEN :d_start AND :d_stop LIMIT 1",
                                                     codes));
    const int year = Year(date);
    query.Param("d_start").setAsDateTime(SADateTime(year, 1, 1));
    query.Param("d_stop").setAsDateTime(SADateTime(year, 12, 31));
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
    static_assert(kClosing == 1 && kProfitAndLoss == 2);
    return HasOperation(cmd, date, "1, 2");
}

bool CPSQLrow::CheckApertura(SACommand *cmd, long date) const
{
    static_assert(kOpening == 3);
    return HasOperation(cmd, date, "3");
}

CPSQLpcc::CPSQLpcc()
    : CTable({"pnotacdc",
              {LUMERA_COLUMN(PNOTA_CENTRO, pcc_pno, kKey), LUMERA_COLUMN(PNOTA_CENTRO, pcc_idx, kKey),
               LUMERA_PLAIN(PNOTA_CENTRO, pcc_riga), LUMERA_PLAIN(PNOTA_CENTRO, pcc_cdc),
               LUMERA_PLAIN(PNOTA_CENTRO, pcc_importo)}})
{
}
