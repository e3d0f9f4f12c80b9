#pragma once

#include "tarvolumera/Company.h"

/// First level of the chart (admin.mastri).
struct MASTRI {
    long mas_codice = 0;
    Text<91> mas_desc;
    long mas_cli = 0; ///< 1 = the customers' master
    long mas_for = 0; ///< 1 = the suppliers' master
};

/// Second level (admin.conti).
struct CONTI {
    long con_mas = 0, con_codice = 0;
    Text<91> con_desc;
    long con_cli = 0, con_for = 0;
};

/// Third level (admin.sotcon): the accounts that rows are written on. Customers and suppliers have none: on their
/// masters the sub-account is the counterpart's own code.
struct SOTTOCON {
    long sot_mas = 0, sot_con = 0, sot_codice = 0;
    Text<91> sot_desc;
    Text<40> sot_desc1; ///< description used in lists
    Text<1> sot_tipo;   ///< "A" assets, "P" liabilities, "C" costs, "R" revenues, "T" left out of the year-end
};

class CPSQLmas : public CCodeTable<MASTRI, &MASTRI::mas_codice> {
  public:
    CPSQLmas();
};

class CPSQLcon : public CTable<CONTI> {
  public:
    CPSQLcon();
    bool Search(SACommand *cmd, long mas, long con, CONTI *record, bool = false) const;
};

class CPSQLsot : public CTable<SOTTOCON> {
  public:
    CPSQLsot();
    bool Search(SACommand *cmd, long mas, long con, long sot, SOTTOCON *record, bool = false) const;
};

extern CPSQLmas sqlmas;
extern CPSQLcon sqlcon;
extern CPSQLsot sqlsot;

/// The description of what a row stands on: the sub-account's, or the counterpart's name on the customers' or
/// suppliers' master. Empty when there is no such account.
Text<91> AccountDescription(SACommand *cmd, const AccountKey &account);

/// Counterpart kind of a master: 0 the customers', 1 the suppliers', 2 an ordinary one.
long MasterRelation(const DITTE &company, long mas);

/// True when a row may stand on the account: a sub-account of the chart, or a known customer or supplier below an
/// existing account of its master.
bool AccountExists(SACommand *cmd, const AccountKey &account);
