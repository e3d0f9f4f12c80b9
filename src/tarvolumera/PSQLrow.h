#pragma once

#include "tarvolumera/JournalEntry.h"

/// The rows of the journal (admin.pnotaro2).
class CPSQLrow : public CTable<PNOTA_RIGA> {
  public:
    CPSQLrow();

    /// True when the year of the date has been closed (opened): it has entries of operation 1 or 2 (of operation 3).
    bool CheckChiusura(SACommand *cmd, long date) const;
    bool CheckApertura(SACommand *cmd, long date) const;
};
extern CPSQLrow sqlrow;

class CPSQLpcc : public CTable<PNOTA_CENTRO> {
  public:
    CPSQLpcc();
};
extern CPSQLpcc sqlpcc;
