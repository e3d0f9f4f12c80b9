#include "tarvolumera/ChartOfAccounts.h"

#include "tarvolumera/Counterparts.h"

CPSQLmas sqlmas;
CPSQLcon sqlcon;
CPSQLsot sqlsot;

CPSQLmas::CPSQLmas()
    : CCodeTable({"mastri",
                  {LUMERA_COLUMN(MASTRI, mas_codice, kKey), LUMERA_PLAIN(MASTRI, mas_desc),
                   LUMERA_PLAIN(MASTRI, mas_cli), LUMERA_PLAIN(MASTRI, mas_for)}})
{
}

CPSQLcon::CPSQLcon()
    : CTable({"conti",
              {LUMERA_COLUMN(CONTI, con_mas, kKey), LUMERA_COLUMN(CONTI, con_codice, kKey),
               LUMERA_PLAIN(CONTI, con_desc), LUMERA_PLAIN(CONTI, con_cli), LUMERA_PLAIN(CONTI, con_for)}})
{
}

bool CPSQLcon::Search(SACommand *cmd, long mas, long con, CONTI *record, bool) const
{
    *record = CONTI{};
    record->con_mas = mas;
    record->con_codice = con;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = CONTI{};
    return found;
}

CPSQLsot::CPSQLsot()
    : CTable({"sotcon",
              {LUMERA_COLUMN(SOTTOCON, sot_mas, kKey), LUMERA_COLUMN(SOTTOCON, sot_con, kKey),
               LUMERA_COLUMN(SOTTOCON, sot_codice, kKey), LUMERA_PLAIN(SOTTOCON, sot_desc),
               LUMERA_PLAIN(SOTTOCON, sot_desc1), LUMERA_PLAIN(SOTTOCON, sot_tipo)}})
{
}

bool CPSQLsot::Search(SACommand *cmd, long mas, long con, long sot, SOTTOCON *record, bool) const
{
    *record = SOTTOCON{};
    record->sot_mas = mas;
    record->sot_con = con;
    record->sot_codice = sot;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = SOTTOCON{};
    return found;
}

long MasterRelation(const DITTE &company, long mas)
{
    if (mas == 0) return kNoCounterpart;
    if (mas == company.dit_mas_cli) return kCustomer;
    if (mas == company.dit_mas_for) return kSupplier;
    return kNoCounterpart;
}

Text<91> AccountDescription(SACommand *cmd, const AccountKey &account)
{
    if (!account.IsSet()) return {};
    const long relation = MasterRelation(lumera_db_impo, account.mas);
    if (relation == kCustomer) {
        CLIENTI customer;
        if (sqlcli.Search(cmd, account.sot, &customer)) return customer.cli_desc;
    }
    if (relation == kSupplier) {
        FORNITORI supplier;
        if (sqlfor.Search(cmd, account.sot, &supplier)) return supplier.for_desc;
    }
    SOTTOCON sub_account;
    sqlsot.Search(cmd, account.mas, account.con, account.sot, &sub_account);
    return sub_account.sot_desc;
}

bool AccountExists(SACommand *cmd, const AccountKey &account)
{
    if (!account.IsSet()) return false;
    const long relation = MasterRelation(lumera_db_impo, account.mas);
    if (relation == kNoCounterpart) {
        SOTTOCON sub_account;
        return sqlsot.Search(cmd, account.mas, account.con, account.sot, &sub_account);
    }
    CONTI level;
    if (!sqlcon.Search(cmd, account.mas, account.con, &level)) return false;
    if (relation == kCustomer) {
        CLIENTI customer;
        return sqlcli.Search(cmd, account.sot, &customer);
    }
    FORNITORI supplier;
    return sqlfor.Search(cmd, account.sot, &supplier);
}
