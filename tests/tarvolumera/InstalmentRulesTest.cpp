#include "tarvolumera/InstalmentRules.h"

#include "tarvodlg/base/Dates.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAreArray;

long D(const char *iso)
{
    return ParseDate(iso).value();
}

// --- amounts --------------------------------------------------------------------------------------------------------

enum class Split { OnFirst, Equal, Separate, EqualAndSeparate };

struct SplitCase {
    const char *name;
    double total, vat;
    long count;
    Split mode;
    std::vector<double> expected;
};
void PrintTo(const SplitCase &c, std::ostream *out)
{
    *out << c.name;
}

class SplitTotalTest : public testing::TestWithParam<SplitCase> {};

TEST_P(SplitTotalTest, GivesTheAmounts)
{
    const SplitCase &c = GetParam();
    PAGAMENTI terms;
    terms.pag_num_rate = c.count;
    terms.pag_rate_uguali = c.mode == Split::Equal || c.mode == Split::EqualAndSeparate ? 1 : 0;
    terms.pag_iva_separata = c.mode == Split::Separate || c.mode == Split::EqualAndSeparate ? 1 : 0;
    const std::vector<double> amounts = SplitTotal(terms, c.total, c.vat);
    ASSERT_EQ(amounts.size(), c.expected.size());
    for (std::size_t i = 0; i < amounts.size(); ++i) EXPECT_NEAR(amounts[i], c.expected[i], 1e-9) << "rata " << i + 1;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SplitTotalTest,
    testing::Values(
        SplitCase{"OneInstalmentIsTheTotal", 122.00, 22.00, 1, Split::OnFirst, {122.00}},
        SplitCase{"LastTakesTheRounding", 100.00, 0.00, 3, Split::OnFirst, {33.34, 33.34, 33.32}},
        SplitCase{"VatRidesOnTheFirst", 122.00, 22.00, 2, Split::OnFirst, {72.00, 50.00}},
        SplitCase{"VatOnItsOwnIsOneMore", 122.00, 22.00, 2, Split::Separate, {22.00, 50.00, 50.00}},
        SplitCase{"OneTermWithSeparateVatGivesTwo", 122.00, 22.00, 1, Split::Separate, {22.00, 100.00}},
        SplitCase{"EqualSplitsVatToo", 122.00, 22.00, 3, Split::Equal, {40.67, 40.67, 40.66}},
        SplitCase{"EqualWinsOverSeparateButCountsOneMore", 120.00, 20.00, 2, Split::EqualAndSeparate, {40, 40, 40}},
        SplitCase{"CreditNoteMirrorsTheInvoice", -100.00, 0.00, 3, Split::OnFirst, {-33.34, -33.34, -33.32}},
        SplitCase{"OneCentGoesToTheFirst", 0.01, 0.00, 3, Split::OnFirst, {0.01, 0.01, -0.01}},
        SplitCase{"BillionsAddUpToTheCent",
                  99999999999.99,
                  0,
                  3,
                  Split::Equal,
                  {33333333333.33, 33333333333.33, 33333333333.33}},
        SplitCase{"SixtyAndTheVatGiveNothing", 100.00, 18.03, 60, Split::Separate, {}},
        SplitCase{"NegativeCountGivesNothing", 100.00, 0.00, -3, Split::Separate, {}},
        SplitCase{"ZeroTotalGivesNothing", 0.00, 0.00, 3, Split::OnFirst, {}},
        SplitCase{"MoreThanTheGridGivesNothing", 100.00, 0.00, 61, Split::OnFirst, {}},
        SplitCase{"NoInstalmentGivesNothing", 100.00, 0.00, 0, Split::Separate, {}}),
    [](const auto &p) { return std::string(p.param.name); });

// --- dates ----------------------------------------------------------------------------------------------------------

struct TermsSpec {
    const char *start = "DATA FATTURA";
    long initial = 0, interval = 30, count = 1;
    long fixed_1 = 0, fixed_2 = 0;
    const char *excluded_1 = "", *excluded_2 = "";
};

PAGAMENTI Terms(const TermsSpec &spec)
{
    PAGAMENTI terms;
    terms.pag_ini = spec.start;
    terms.pag_gg_ini = spec.initial;
    terms.pag_gg_int = spec.interval;
    terms.pag_num_rate = spec.count;
    terms.pag_gg_fisso_1 = spec.fixed_1;
    terms.pag_gg_fisso_2 = spec.fixed_2;
    terms.pag_mese_esc_1 = spec.excluded_1;
    terms.pag_mese_esc_2 = spec.excluded_2;
    return terms;
}

struct DueCase {
    const char *name;
    TermsSpec terms;
    const char *document; ///< "" = none, then the registration on 15/01/2026 counts
    const char *different;
    std::vector<const char *> expected; ///< "" = no date
};
void PrintTo(const DueCase &c, std::ostream *out)
{
    *out << c.name;
}

class DueDaysTest : public testing::TestWithParam<DueCase> {};

TEST_P(DueDaysTest, GivesTheDates)
{
    const DueCase &c = GetParam();
    const PAGAMENTI terms = Terms(c.terms);
    StartDates dates{D("2026-01-15"), *c.document == 0 ? 0 : D(c.document), *c.different == 0 ? 0 : D(c.different)};
    std::vector<std::string> days;
    for (const long day : DueDays(terms, StartDay(terms, dates), c.expected.size())) days.push_back(FormatIsoDate(day));
    EXPECT_THAT(days, ElementsAreArray(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DueDaysTest,
    testing::Values(
        DueCase{"InvoiceDatePlusDays", {"DATA FATTURA", 30, 30}, "2026-01-10", "", {"2026-02-09", "2026-03-11"}},
        DueCase{"RegistrationStandsForAMissingDocumentDate", {"DATA FATTURA", 0, 30}, "", "", {"2026-01-15"}},
        DueCase{"RuleIsCaseBlind", {"data fattura", 0, 30}, "2026-01-10", "", {"2026-01-10"}},
        DueCase{"DifferentDateWhenThereIsOne", {"DATA DIVERSA", 10, 30}, "2026-01-10", "2026-03-01", {"2026-03-11"}},
        DueCase{"DifferentDateFallsBackToTheDocument", {"DATA DIVERSA", 10, 30}, "2026-01-10", "", {"2026-01-20"}},
        DueCase{"EndOfDecemberIsTheThirtyFirst", {"FINE MESE", 0, 30}, "2026-12-05", "", {"2026-12-31"}},
        DueCase{"EndOfFebruaryInALeapYear", {"FINE MESE", 0, 30}, "2028-02-03", "", {"2028-02-29"}},
        DueCase{"EndOfMonthStepsKeepTheMonthEnds",
                {"FINE MESE", 30, 30, 3, 31},
                "2026-01-10",
                "",
                {"2026-02-28", "2026-03-31", "2026-04-30"}},
        DueCase{"UnknownRuleLeavesTheDatesEmpty", {"A PIACERE", 30, 30}, "2026-01-10", "", {"", ""}},
        DueCase{"AugustMovesOnAndTheNextCountsFromThere",
                {"FINE MESE", 30, 30, 2, 31, 0, "AGOSTO"},
                "2026-07-10",
                "",
                {"2026-09-30", "2026-10-31"}},
        DueCase{"TwoExcludedMonthsInARow",
                {"DATA FATTURA", 30, 30, 1, 0, 0, "AGOSTO", "SETTEMBRE"},
                "2026-07-20",
                "",
                {"2026-10-18"}},
        DueCase{"ExcludedMonthWithoutIntervalStillMovesOn",
                {"DATA FATTURA", 60, 0, 1, 0, 0, "AGOSTO"},
                "2026-06-10",
                "",
                {"2026-09-08"}},
        DueCase{"ShortStepsLeaveFebruaryToo",
                {"DATA FATTURA", 0, 1, 1, 31, 0, "FEBBRAIO"},
                "2026-02-20",
                "",
                {"2026-03-31"}},
        DueCase{"StepsOfADayDoNotGoBackToFebruary",
                {"DATA FATTURA", 0, 1, 3, 1, 29},
                "2028-02-29",
                "",
                {"2028-02-29", "2028-03-01", "2028-03-29"}},
        DueCase{"YearlyOnAFixedDayNeverLeavesItsMonth",
                {"DATA FATTURA", 0, 365, 2, 15, 0, "AGOSTO"},
                "2026-08-10",
                "",
                {"", ""}},
        DueCase{"NegativeIntervalCountsAsNone",
                {"DATA FATTURA", 30, -30, 2},
                "2026-01-10",
                "",
                {"2026-02-09", "2026-02-09"}},
        DueCase{"NegativeFixedDayCountsAsNone", {"DATA FATTURA", 30, 30, 1, -5}, "2026-01-10", "", {"2026-02-09"}},
        DueCase{"PastTheLastYearThereIsNoDate", {"DATA FATTURA", 3'000'000, 30}, "2026-01-10", "", {""}},
        DueCase{
            "MonthNameMustMatchExactly", {"DATA FATTURA", 60, 30, 1, 0, 0, "Agosto"}, "2026-06-10", "", {"2026-08-09"}},
        DueCase{"FirstOfTwoFixedDaysNotBefore",
                {"DATA FATTURA", 0, 30, 3, 15, 31},
                "2026-04-02",
                "",
                {"2026-04-15", "2026-05-15", "2026-06-15"}}),
    [](const auto &p) { return std::string(p.param.name); });

struct AdaptCase {
    const char *name;
    long fixed_1, fixed_2;
    const char *date, *expected;
};
void PrintTo(const AdaptCase &c, std::ostream *out)
{
    *out << c.name;
}

class AdaptDataTest : public testing::TestWithParam<AdaptCase> {};

TEST_P(AdaptDataTest, MovesForwardOnceAndStays)
{
    const AdaptCase &c = GetParam();
    const PAGAMENTI terms = Terms({.fixed_1 = c.fixed_1, .fixed_2 = c.fixed_2});
    const long adapted = AdaptData(&terms, D(c.date));
    EXPECT_EQ(FormatIsoDate(adapted), c.expected);
    EXPECT_EQ(AdaptData(&terms, adapted), adapted) << "a second time it must change nothing";
}

INSTANTIATE_TEST_SUITE_P(Cases, AdaptDataTest,
                         testing::Values(AdaptCase{"NoFixedDay", 0, 0, "2026-05-07", "2026-05-07"},
                                         AdaptCase{"FixedDayAhead", 10, 0, "2026-05-07", "2026-05-10"},
                                         AdaptCase{"FixedDayItself", 10, 0, "2026-05-10", "2026-05-10"},
                                         AdaptCase{"FixedDayPassedGoesToNextMonth", 10, 0, "2026-05-11", "2026-06-10"},
                                         AdaptCase{"OverTheYear", 10, 0, "2026-12-11", "2027-01-10"},
                                         AdaptCase{"OnlyTheSecondGiven", 0, 20, "2026-05-11", "2026-05-20"},
                                         AdaptCase{"OrderOfTheTwoDoesNotMatter", 31, 15, "2026-05-16", "2026-05-31"},
                                         AdaptCase{"CutToTheMonth", 31, 0, "2026-04-03", "2026-04-30"},
                                         AdaptCase{"SecondOfMarchGoesBack", 31, 0, "2026-03-02", "2026-02-28"},
                                         AdaptCase{"FirstOfMarchInLeapYear", 30, 0, "2028-03-01", "2028-02-29"},
                                         AdaptCase{"ThirdOfMarchGoesOn", 31, 0, "2026-03-03", "2026-03-31"},
                                         AdaptCase{"FixedFirstOfMarchIsMeant", 1, 31, "2026-03-01", "2026-03-01"}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST(AdaptDataTest, NoDateStaysNoDate)
{
    const PAGAMENTI terms = Terms({.fixed_1 = 31});
    EXPECT_EQ(AdaptData(&terms, 0), 0);
}

} // namespace
