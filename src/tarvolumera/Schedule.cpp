#include "tarvolumera/Schedule.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Protocols.h"

CPSQLsca sqlsca;

CPSQLsca::CPSQLsca()
    : CTable({"scadenze", {LUMERA_COLUMN(SCADENZE, sca_relaz, kKey), LUMERA_COLUMN(SCADENZE, sca_num, kKey),
                           LUMERA_PLAIN(SCADENZE, sca_anno),         LUMERA_CODE(SCADENZE, sca_sez),
                           LUMERA_PLAIN(SCADENZE, sca_cli_for),      LUMERA_DATE(SCADENZE, sca_data),
                           LUMERA_PLAIN(SCADENZE, sca_importo),      LUMERA_CODE(SCADENZE, sca_pag),
                           LUMERA_PLAIN(SCADENZE, sca_tipo_pag),     LUMERA_CODE(SCADENZE, sca_ban),
                           LUMERA_PLAIN(SCADENZE, sca_pagato),       LUMERA_DATE(SCADENZE, sca_data_pag),
                           LUMERA_DATE(SCADENZE, sca_emessa),        LUMERA_PLAIN(SCADENZE, sca_fattura),
                           LUMERA_DATE(SCADENZE, sca_data_fattura),  LUMERA_PLAIN(SCADENZE, sca_desc),
                           LUMERA_CODE(SCADENZE, sca_dst),           LUMERA_CODE(SCADENZE, sca_age),
                           LUMERA_PLAIN(SCADENZE, sca_parked),       LUMERA_PLAIN(SCADENZE, sca_printed),
                           LUMERA_PLAIN(SCADENZE, sca_rata),         LUMERA_PLAIN(SCADENZE, sca_rate),
                           LUMERA_PLAIN(SCADENZE, sca_ultima),       LUMERA_PLAIN(SCADENZE, sca_non_ultima),
                           LUMERA_PLAIN(SCADENZE, sca_tot_fat),      LUMERA_CODE(SCADENZE, sca_pno)}})
{
}

void CPSQLsca::Blank(SACommand *cmd, SCADENZE *record, short side) const
{
    *record = SCADENZE{};
    record->sca_relaz = side;
    record->sca_num = NextNumber(cmd, side);
    record->sca_data = CurrentUserInterface().Today();
    record->sca_anno = Year(record->sca_data);
    record->sca_emessa = record->sca_data;
    record->label = side == kSupplier ? "Fornitore" : "Cliente..";
}

bool CPSQLsca::Search(SACommand *cmd, short side, long number, SCADENZE *record, bool) const
{
    *record = SCADENZE{};
    record->sca_relaz = side;
    record->sca_num = number;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = SCADENZE{};
    record->label = side == kSupplier ? "Fornitore" : "Cliente..";
    return found;
}

long CPSQLsca::NextNumber(SACommand *cmd, short side) const
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(),
                    "SELECT sca_num FROM admin.scadenze WHERE sca_relaz = :rel"
                    " ORDER BY sca_num DESC LIMIT 1"); // MAX would need statistics to use the index
    query.Param("rel").setAsLong(side);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() + 1 : 1;
}

void CPSQLsca::SqlTransaction(SACommand *cmd, int operation, SCADENZE *record) const
{
    CommandScope scope(cmd);
    record->sca_anno = Year(record->sca_data);
    if (operation != kInsert) return CTable::SqlTransaction(scope.get(), operation, record);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Schedule);
    record->sca_num = NextNumber(scope.get(), static_cast<short>(record->sca_relaz));
    CTable::SqlTransaction(scope.get(), kInsert, record);
    transaction.Commit();
}

long CPSQLsca::CountOf(SACommand *cmd, long entry) const
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT COUNT(*) AS numrec FROM admin.scadenze WHERE sca_pno = :codice");
    query.Param("codice").setAsLong(entry);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong();
}
