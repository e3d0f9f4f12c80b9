#include "tarvodlg/widgets/Pickers.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <gtest/gtest.h>

namespace {

long On(const char *iso)
{
    return ParseDate(iso).value();
}

std::string Shown(const Period &period)
{
    return FormatIsoDate(period.start) + " " + FormatIsoDate(period.stop);
}

struct StepCase {
    const char *name, *start, *stop;
    int steps;
    const char *expected;
};

void PrintTo(const StepCase &c, std::ostream *out)
{
    *out << c.start << ' ' << c.stop << " by " << c.steps;
}

class StepPeriodTest : public testing::TestWithParam<StepCase> {};

TEST_P(StepPeriodTest, MovesByItsOwnLength)
{
    const StepCase &c = GetParam();
    EXPECT_EQ(Shown(StepPeriod({On(c.start), On(c.stop)}, c.steps)), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StepPeriodTest,
    testing::Values(StepCase{"FebruaryToMarch", "2026-02-01", "2026-02-28", 1, "2026-03-01 2026-03-31"},
                    StepCase{"MarchToLeapFebruary", "2028-03-01", "2028-03-31", -1, "2028-02-01 2028-02-29"},
                    StepCase{"OverTheYear", "2026-12-01", "2026-12-31", 1, "2027-01-01 2027-01-31"},
                    StepCase{"QuarterBack", "2026-01-01", "2026-03-31", -1, "2025-10-01 2025-12-31"},
                    StepCase{"Year", "2026-01-01", "2026-12-31", 1, "2027-01-01 2027-12-31"},
                    StepCase{"Week", "2026-03-02", "2026-03-08", 1, "2026-03-09 2026-03-15"},
                    StepCase{"OneDay", "2026-03-01", "2026-03-01", -1, "2026-02-28 2026-02-28"},
                    StepCase{"StaysAtTheEnd", "2199-01-01", "2199-12-31", 1, "2199-01-01 2199-12-31"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(PeriodAround, TakesTheWholeMonthQuarterOrYear)
{
    EXPECT_EQ(Shown(PeriodAround(On("2028-02-15"), 1)), "2028-02-01 2028-02-29");
    EXPECT_EQ(Shown(PeriodAround(On("2026-12-31"), 3)), "2026-10-01 2026-12-31");
    EXPECT_EQ(Shown(PeriodAround(On("2026-04-01"), 3)), "2026-04-01 2026-06-30");
    EXPECT_EQ(Shown(PeriodAround(On("2026-04-01"), 12)), "2026-01-01 2026-12-31");
}

class PickersTest : public testing::Test {
  protected:
    PickersTest() : before_(SetUserInterface(&ui)) { CDateField::SetWorkingDate(On("2026-03-10")); }
    ~PickersTest() override
    {
        SetUserInterface(before_);
        EXPECT_EQ(ui.Faults(), "");
    }
    ScriptedUserInterface ui;

  private:
    UserInterface *before_;
};

TEST_F(PickersTest, YearOutOfRangeIsRefused)
{
    CAnno picker;
    picker.m_anno = 2026;
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Type("1066");
        keys::Press(Qt::Key_Return);
        EXPECT_TRUE(picker.isVisible());
        EXPECT_EQ(ui.beeps, 1);
        keys::Type("2027");
        keys::Press(Qt::Key_F2);
    });
    EXPECT_EQ(picker.DoModal(), IDOK);
    EXPECT_EQ(picker.m_anno, 2027);
}

TEST_F(PickersTest, DateIsTypedOrWalkedToOnTheMonth)
{
    CData picker;
    picker.m_data = On("2026-03-31");
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Type("1503");
        keys::Press(Qt::Key_Tab);  // to the month
        keys::Press(Qt::Key_Down); // a week later
        keys::Press(Qt::Key_F2);
    });
    EXPECT_EQ(picker.DoModal(), IDOK);
    EXPECT_EQ(FormatIsoDate(picker.m_data), "2026-03-22");
}

TEST_F(PickersTest, EmptyDateIsAnAnswerOnlyWhereItMayBe)
{
    CData picker;
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Press(Qt::Key_F2);
        EXPECT_EQ(ui.beeps, 1);
        keys::Type("32");
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_EQ(picker.DoModal(), IDCANCEL);
    EXPECT_EQ(picker.m_data, 0);

    CData optional;
    optional.m_obbligatoria = false;
    keys::WhenNextWindowOpens([&](QWidget *) { keys::Press(Qt::Key_Return); });
    EXPECT_EQ(optional.DoModal(), IDOK);
    EXPECT_EQ(optional.m_data, 0);
}

TEST_F(PickersTest, DateFieldOpensTheMonthAndTakesItsDay)
{
    CDateField field;
    keys::Open(&field);
    field.setFocus();
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Type("05");
        keys::Press(Qt::Key_Return);
    });
    keys::Press(Qt::Key_F4);
    EXPECT_EQ(FormatIsoDate(field.Value()), "2026-03-05");
    EXPECT_TRUE(field.IsModified());
}

TEST_F(PickersTest, PeriodStepsAndNeverEndsBeforeItBegins)
{
    CDataSel picker;
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Press(Qt::Key_PageUp);
        keys::Press(Qt::Key_Return);
        keys::Type("0101");
        keys::Press(Qt::Key_F2);
        EXPECT_TRUE(picker.isVisible());
        EXPECT_EQ(ui.beeps, 1);
        keys::Type("1502");
        keys::Press(Qt::Key_Return);
    });
    EXPECT_EQ(picker.DoModal(), IDOK);
    EXPECT_EQ(Shown({picker.m_start, picker.m_stop}), "2026-02-01 2026-02-15");
}

} // namespace
