#pragma once

#include "tarvolumera/Company.h"

/// Payment type 2 is the bank receipt (RiBa), 7 is paid at once.
inline constexpr long kPaymentRiba = 2, kPaymentImmediate = 7;

/// Payment terms (admin.pagament).
struct PAGAMENTI {
    long pag_codice = 0;
    Text<30> pag_desc;
    long pag_tipo_pag = 0;
    Text<20> pag_tipo;   ///< kind of terms, its short text ("RI.BA.")
    long pag_genera = 1; ///< 0 = no instalments (but see GeneratesInstalments)
    Text<12> pag_ini;    ///< start rule: "DATA FATTURA", "DATA DIVERSA", "FINE MESE"
    long pag_gg_ini = 0; ///< days added to the start date
    long pag_gg_int = 0; ///< days between two instalments
    long pag_num_rate = 1;
    Text<9> pag_mese_esc_1, pag_mese_esc_2, pag_mese_esc_3; ///< excluded months, "AGOSTO"
    long pag_rate_uguali = 0;                               ///< 1 = the whole total, VAT included, is split evenly
    long pag_iva_separata = 0;                              ///< 1 = the VAT is an instalment of its own, the first
    long pag_gg_fisso_1 = 0, pag_gg_fisso_2 = 0;            ///< fixed days of the month; 31 = last day, 0 = none
};

class CPSQLpag : public CCodeTable<PAGAMENTI, &PAGAMENTI::pag_codice> {
  public:
    CPSQLpag();
};
extern CPSQLpag sqlpag;

/// What is paid at once (type 7) always makes its instalment, whatever its flag says.
bool GeneratesInstalments(const PAGAMENTI &terms);

/// Moves a due date forward to the first fixed day of the terms that is not before it, cut to the length of its month.
/// A 1 or 2 March reached with a fixed day of 29 or more goes back to the end of February, so that steps of 30 days do
/// not skip it. Applying it twice changes nothing more. @param date  day number; 0 stays 0
long AdaptData(const PAGAMENTI *terms, long date);
