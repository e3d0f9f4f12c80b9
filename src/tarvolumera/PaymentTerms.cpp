#include "tarvolumera/PaymentTerms.h"

#include "tarvodlg/base/Dates.h"

#include <algorithm>

CPSQLpag sqlpag;

CPSQLpag::CPSQLpag()
    : CCodeTable({"pagament",
                  {LUMERA_COLUMN(PAGAMENTI, pag_codice, kKey), LUMERA_PLAIN(PAGAMENTI, pag_desc),
                   LUMERA_PLAIN(PAGAMENTI, pag_tipo_pag), LUMERA_PLAIN(PAGAMENTI, pag_tipo),
                   LUMERA_PLAIN(PAGAMENTI, pag_genera), LUMERA_PLAIN(PAGAMENTI, pag_ini),
                   LUMERA_PLAIN(PAGAMENTI, pag_gg_ini), LUMERA_PLAIN(PAGAMENTI, pag_gg_int),
                   LUMERA_PLAIN(PAGAMENTI, pag_num_rate), LUMERA_PLAIN(PAGAMENTI, pag_mese_esc_1),
                   LUMERA_PLAIN(PAGAMENTI, pag_mese_esc_2), LUMERA_PLAIN(PAGAMENTI, pag_mese_esc_3),
                   LUMERA_PLAIN(PAGAMENTI, pag_rate_uguali), LUMERA_PLAIN(PAGAMENTI, pag_iva_separata),
                   LUMERA_PLAIN(PAGAMENTI, pag_gg_fisso_1), LUMERA_PLAIN(PAGAMENTI, pag_gg_fisso_2)}})
{
}

bool GeneratesInstalments(const PAGAMENTI &terms)
{
    return terms.pag_genera != 0 || terms.pag_tipo_pag == kPaymentImmediate;
}

long AdaptData(const PAGAMENTI *terms, long date)
{
    long first = std::max(0L, terms->pag_gg_fisso_1), second = std::max(0L, terms->pag_gg_fisso_2);
    if (first == 0) std::swap(first, second);
    if (Year(date) == 0 || first == 0) return date;
    if (second != 0 && second < first) std::swap(first, second);
    const long highest = std::max(first, second);

    int day = 0, month = 0, year = 0;
    JulianToDate(date, &day, &month, &year);
    // A step of thirty days over the short month lands here; a fixed day of 1 or 2 March itself is meant as it is.
    const bool own_fixed_day = first <= 2 && day <= first;
    if (month == 3 && day <= 2 && highest >= 29 && !own_fixed_day) return DateToJulian(DaysInMonth(2, year), 2, year);

    for (const long fixed : {first, second}) {
        if (fixed == 0) continue;
        const int in_month = static_cast<int>(std::min<long>(fixed, DaysInMonth(month, year)));
        if (in_month >= day) return DateToJulian(in_month, month, year);
    }
    const int next_month = month == 12 ? 1 : month + 1, next_year = month == 12 ? year + 1 : year;
    return DateToJulian(static_cast<int>(std::min<long>(first, DaysInMonth(next_month, next_year))), next_month,
                        next_year);
}
