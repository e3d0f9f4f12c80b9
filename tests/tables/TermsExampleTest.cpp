#include "tables/TermsExample.h"

#include "tarvodlg/base/Dates.h"

#include <gtest/gtest.h>

namespace {

struct Case {
    const char *name;
    PAGAMENTI terms;
    const char *expected;
};
void PrintTo(const Case &c, std::ostream *out)
{
    *out << c.name;
}

/// From the invoice date, every thirty days.
PAGAMENTI Terms(long count, const std::function<void(PAGAMENTI &)> &change = {})
{
    PAGAMENTI terms;
    terms.pag_ini = "DATA FATTURA";
    terms.pag_num_rate = count;
    terms.pag_gg_int = 30;
    if (change) change(terms);
    return terms;
}

class TermsExampleTest : public testing::TestWithParam<Case> {};

TEST_P(TermsExampleTest, TellsDatesAndAmounts)
{
    EXPECT_EQ(ExampleOfTerms(GetParam().terms, DateToJulian(15, 1, 2026)),
              std::string("fattura di 1.220,00 del 15/01/2026: ") + GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TermsExampleTest,
    testing::Values(
        Case{"Equal", Terms(3, [](auto &wanted) { wanted.pag_rate_uguali = 1; }),
             "406,67 il 15/01/2026, 406,67 il 14/02/2026, 406,66 il 16/03/2026"},
        Case{"VatOnTheFirst", Terms(2), "720,00 il 15/01/2026, 500,00 il 14/02/2026"},
        Case{"VatApart", Terms(1, [](auto &wanted) { wanted.pag_iva_separata = 1; }),
             "220,00 il 15/01/2026, 1.000,00 il 14/02/2026"},
        Case{"WithoutStart", Terms(1, [](auto &wanted) { wanted.pag_ini = ""; }), "1.220,00 in data da scrivere"},
        Case{"Six", Terms(6, [](auto &wanted) { wanted.pag_rate_uguali = 1, wanted.pag_gg_int = 1; }),
             "203,34 il 15/01/2026, 203,34 il 16/01/2026, 203,34 il 17/01/2026, 203,34 il 18/01/2026, 203,34 il "
             "19/01/2026, 203,30 il 20/01/2026"},
        Case{"CutShort", Terms(12, [](auto &wanted) { wanted.pag_rate_uguali = 1; }),
             "101,67 il 15/01/2026, 101,67 il 14/02/2026, 101,67 il 16/03/2026, 101,67 il 15/04/2026, 101,67 il "
             "15/05/2026 ... fino alla 12ª di 101,63 il 11/12/2026"},
        Case{"TooMany", Terms(60, [](auto &wanted) { wanted.pag_iva_separata = 1; }), "61 rate, più di 60"},
        Case{"None", Terms(0), "nessuna scadenza"},
        Case{"NotWanted", Terms(3, [](auto &wanted) { wanted.pag_genera = 0; }), "nessuna scadenza"},
        Case{"PaidAtOnce",
             Terms(1, [](auto &wanted) { wanted.pag_genera = 0, wanted.pag_tipo_pag = kPaymentImmediate; }),
             "1.220,00 il 15/01/2026"}),
    [](const auto &p) { return std::string(p.param.name); });

} // namespace
