#pragma once

#include "tarvolumera/Company.h"

#include <array>

/// A template row of a causale.
struct CAUCONT_RIGA {
    long car_cau = 0, car_idx = 0;
    long car_mas = 0, car_con = 0, car_sot = 0;
    long car_tipo = 2; ///< 0 Dare, 1 Avere, anything else leaves the side to the user
    long car_auto = 0; ///< 1 = the amount follows VAT lines and document total ("SI")
};

/// A causale (transaction type, admin.caucont1) with its up to twenty template rows.
struct CAUCONT {
    long cac_codice = 0;
    Text<30> cac_desc;
    long cac_reg = 0;             ///< VAT register 1 to 7
    long cac_rel = 2;             ///< counterpart kind
    long cac_iva = 0;             ///< 1 = the entry has VAT lines
    long cac_iva_sosp = 0;        ///< 1 = under suspended VAT
    long cac_sez = 0;             ///< VAT section the causale names; 0 = none
    long cac_tipo_documento = 0;  ///< electronic-invoice document type, 4 for "TD04"
    long cac_nota_variazione = 0; ///< nonzero for credit and debit notes
    long cac_allegati = 0;        ///< 1 = attachments are offered after a new entry
    std::array<CAUCONT_RIGA, 20> righe{};
};

class CPSQLcac : public CCodeTable<CAUCONT, &CAUCONT::cac_codice> {
  public:
    CPSQLcac();

    /// Reads the causale with its template rows; row i stands at righe[i - 1].
    bool Search(SACommand *cmd, long code, CAUCONT *record, bool = false) const;

    /// Writes the causale and its template rows together.
    void SqlTransaction(SACommand *cmd, int operation, CAUCONT *record) const override;
};
extern CPSQLcac sqlcac;

class CPSQLcar : public CTable<CAUCONT_RIGA> {
  public:
    CPSQLcar();
};
extern CPSQLcar sqlcar;
