#include "schedule/AmountAxis.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace {

struct AxisCase {
    const char *name;
    long long lowest, highest; ///< cents
    int steps;
    const char *labels; ///< from the lowest to the highest
    friend void PrintTo(const AxisCase &axis, std::ostream *out) { *out << axis.name; }
};

class AmountAxisTest : public testing::TestWithParam<AxisCase> {};

TEST_P(AmountAxisTest, HoldsAllValuesInRoundSteps)
{
    const AxisCase &given = GetParam();
    const AmountAxis axis = AmountAxis::Of(given.lowest, given.highest, given.steps);
    EXPECT_LE(axis.lowest, std::min(given.lowest, 0LL));
    EXPECT_GE(axis.highest, std::max(given.highest, 0LL));
    std::string labels;
    for (const long long mark : axis.Marks()) labels += (labels.empty() ? "" : " | ") + axis.Label(mark);
    EXPECT_EQ(labels, given.labels);
    EXPECT_DOUBLE_EQ(axis.ShareOf(axis.lowest), 0);
    EXPECT_DOUBLE_EQ(axis.ShareOf(axis.highest), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AmountAxisTest,
    testing::Values(AxisCase{"Nothing", 0, 0, 4, "0 | 50 | 100"}, AxisCase{"OneCent", 0, 1, 4, "0 | 0,01"},
                    AxisCase{"EndsOnAMark", 0, 100'000, 5, "0 | 200 | 400 | 600 | 800 | 1.000"},
                    AxisCase{"BeyondAMark", 0, 100'001, 5, "0 | 500 | 1.000 | 1.500"},
                    AxisCase{"BothSides", -15'000, 40'000, 6, "-200 | -100 | 0 | 100 | 200 | 300 | 400"},
                    AxisCase{"OnlyNegative", -990, 0, 5, "-10 | -8 | -6 | -4 | -2 | 0"},
                    AxisCase{"Millions", 0, 240'000'000, 5, "0 | 0,5 mln | 1,0 mln | 1,5 mln | 2,0 mln | 2,5 mln"},
                    AxisCase{"ThousandMillions", 0, 200'000'000'000, 2, "0 | 1 mld | 2 mld"},
                    AxisCase{"OneStepOnly", 0, 90'000, 1, "0 | 1.000"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(AmountAxisLimitsTest, ImpossibleAmountsNeitherHangNorOverflow)
{
    const AmountAxis axis =
        AmountAxis::Of(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max(), 4);
    EXPECT_LT(axis.lowest, 0);
    EXPECT_GT(axis.highest, 0);
    EXPECT_LE(axis.Marks().size(), 5u);
}

} // namespace
