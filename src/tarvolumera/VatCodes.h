#pragma once

#include "tarvolumera/Company.h"

// Kinds of VAT code (iva_tip).
inline constexpr long kVatTaxable = 1, kVatExempt = 2, kVatNonTaxable = 3, kVatNotSubject = 4, kVatNonDeductible = 5,
                      kVatDeclarationOfIntent = 6, kVatOutsideField = 7, kVatReverseChargeOwn = 8, kVatCapitalGoods = 9,
                      kVatReceiptsToSplit = 10, kVatExcluded = 11, kVatMargin = 12, kVatReverseCharge = 13,
                      kVatOtherState = 14;

/// A VAT code (admin.codiva).
struct CODIVA {
    long iva_codice = 0;
    Text<60> iva_desc;
    double iva_aliq = 0;       ///< rate, per cent
    long iva_tip = 0;          ///< kind, 1 to 14
    double iva_inded = 0;      ///< non-deductible part, per cent
    long iva_aliq_default = 0; ///< 1 = preferred among those of equal rate and kind
    Text<4> iva_natura;        ///< nature with its sub-code ("N3.5"), for documents and communications
};

class CPSQLiva : public CCodeTable<CODIVA, &CODIVA::iva_codice> {
  public:
    CPSQLiva();

    /// The code of that rate and kind, the preferred one first. False when there is none.
    bool SearchByRate(SACommand *cmd, double rate, long kind, CODIVA *record) const;
};
extern CPSQLiva sqliva;

/// The part of a tax that a purchase may deduct: rounded, so that the non-deductible part is what is left. Kind 5
/// deducts nothing.
double DeductibleTax(double tax, long kind, double non_deductible_per_cent);
