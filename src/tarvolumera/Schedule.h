#pragma once

#include "tarvolumera/Counterparts.h"

/// One instalment (admin.scadenze): what a customer owes the company (side 0) or the company owes a supplier (side 1).
struct SCADENZE {
    long sca_relaz = 0, sca_num = 0;
    long sca_anno = 0; ///< year of the due date
    long sca_sez = 0;
    long sca_cli_for = 0;
    long sca_data = 0; ///< due date
    double sca_importo = 0;
    long sca_pag = 0, sca_tipo_pag = 0;
    long sca_ban = 0;
    long sca_pagato = 0; ///< nonzero = paid or collected
    long sca_data_pag = 0;
    long sca_emessa = 0;
    Text<20> sca_fattura;
    long sca_data_fattura = 0;
    Text<80> sca_desc;
    long sca_dst = 0, sca_age = 0;
    long sca_parked = 0;                     ///< nonzero = held in a payment slip
    long sca_printed = 0;                    ///< 0 = its RiBa has not been printed yet
    long sca_rata = 0, sca_rate = 0;         ///< number within its invoice, and how many there are
    long sca_ultima = 0, sca_non_ultima = 1; ///< exactly one of the two is 1
    double sca_tot_fat = 0;                  ///< invoice total
    long sca_pno = 0;                        ///< journal entry that made it; 0 = entered by hand or imported
    Text<10> label;                          ///< "Cliente.." or "Fornitore", not stored
};

class CPSQLsca : public CTable<SCADENZE> {
  public:
    CPSQLsca();

    /// Empties the record for a new instalment of a side: next free number, not the last one, due and issued today.
    void Blank(SACommand *cmd, SCADENZE *record, short side) const;
    using CTable::Blank;

    bool Search(SACommand *cmd, short side, long number, SCADENZE *record, bool = false) const;

    /// The highest number of the side plus one. A proposal, unless taken under LockNumbers.
    long NextNumber(SACommand *cmd, short side) const;

    /// Inserts under the next free number, whatever was proposed.
    void SqlTransaction(SACommand *cmd, int operation, SCADENZE *record) const override;

    /// How many instalments an entry has made.
    long CountOf(SACommand *cmd, long entry) const;
};
extern CPSQLsca sqlsca;
