#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/Theme.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <gtest/gtest.h>

namespace {

struct AmountCase {
    const char *name;
    const char *typed;
    std::optional<double> value; ///< after rounding to cents
};

void PrintTo(const AmountCase &c, std::ostream *out)
{
    *out << '"' << c.typed << '"';
}

class EvaluateAmountTest : public testing::TestWithParam<AmountCase> {};

TEST_P(EvaluateAmountTest, GivesWhatTheTypistMeant)
{
    const std::optional<double> value = EvaluateAmount(GetParam().typed);
    ASSERT_EQ(value.has_value(), GetParam().value.has_value());
    if (value) {
        EXPECT_EQ(Round(*value, 2), *GetParam().value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, EvaluateAmountTest,
    testing::Values(AmountCase{"Italian", "1.234,56", 1234.56}, AmountCase{"Plain", "1234,5", 1234.5},
                    AmountCase{"PointOfThousands", "1.234", 1234.0}, AmountCase{"PastedForeign", "1,234.56", 1234.56},
                    AmountCase{"PastedWithEuro", "€ 1.234,56", 1234.56}, AmountCase{"Negative", "-3", -3.0},
                    AmountCase{"CommaAtTheEnd", "12,", 12.0}, AmountCase{"Sum", "100+22", 122.0},
                    AmountCase{"SumWithBlanks", " 100 + 22 ", 122.0}, AmountCase{"Product", "3*12,50", 37.5},
                    AmountCase{"ProductBeforeSum", "1.000,00-3*2,5", 992.5}, AmountCase{"LeftToRight", "10-3-2", 5.0},
                    AmountCase{"DivisionLeftToRight", "100/5/2", 10.0}, AmountCase{"Parentheses", "(10+2)/3", 4.0},
                    AmountCase{"Nested", "2*((1+2)*3-4)", 10.0}, AmountCase{"SignBeforeParenthesis", "-(5+1)", -6.0},
                    AmountCase{"TimesNegative", "5*-3", -15.0}, AmountCase{"NoFloatGarbage", "0,1+0,2", 0.3},
                    AmountCase{"HalfCentGoesUp", "1,005*1", 1.01}, AmountCase{"ThirdsComeBack", "100/3", 33.33},
                    AmountCase{"MinusItself", "5-5", 0.0}, AmountCase{"DivisionByZero", "5/0", {}},
                    AmountCase{"DivisionByNothingLeft", "5/(2-2)", {}}, AmountCase{"TwoSigns", "--3", {}},
                    AmountCase{"TwoSignsInside", "5--3", {}}, AmountCase{"Empty", "", {}},
                    AmountCase{"Blank", "  ", {}}, AmountCase{"OperatorAtTheEnd", "5+", {}},
                    AmountCase{"OpenParenthesis", "(5+1", {}}, AmountCase{"ClosedTwice", "(5+1))", {}},
                    AmountCase{"EmptyParentheses", "()", {}}, AmountCase{"TwoNumbers", "12 13", {}},
                    AmountCase{"TwoCommas", "1,2,3", {}}, AmountCase{"Letters", "12a", {}},
                    AmountCase{"TooLarge", "999999999999*999999", {}}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(EvaluateAmountLimits, ManyParenthesesAreRefusedAndDoNotExhaustTheStack)
{
    EXPECT_FALSE(EvaluateAmount(std::string(1'000'000, '(')));
}

struct DateCase {
    const char *name;
    const char *typed;
    const char *date; ///< ISO; "" = empty field, null = refused
    const char *working_day = "2026-03-10";
};

void PrintTo(const DateCase &c, std::ostream *out)
{
    *out << '"' << c.typed << "\" on " << c.working_day;
}

class CompleteDateTest : public testing::TestWithParam<DateCase> {};

TEST_P(CompleteDateTest, CompletesFromTheWorkingDate)
{
    const auto &[name, typed, date, working_day] = GetParam();
    const std::optional<long> day = CompleteDate(typed, ParseDate(working_day).value());
    ASSERT_EQ(day.has_value(), date != nullptr);
    if (day) {
        EXPECT_EQ(FormatIsoDate(*day), date);
    }
}

constexpr const char *kFebruary = "2026-02-10", *kLeapYear = "2028-01-10";

INSTANTIATE_TEST_SUITE_P(
    Cases, CompleteDateTest,
    testing::Values(DateCase{"Day", "15", "2026-03-15"}, DateCase{"OneDigit", "5", "2026-03-05"},
                    DateCase{"DayMonth", "1503", "2026-03-15"}, DateCase{"LastOfYear", "3112", "2026-12-31"},
                    DateCase{"ShortYear", "150326", "2026-03-15"}, DateCase{"LongYear", "15032026", "2026-03-15"},
                    DateCase{"Slash", "15/3", "2026-03-15"}, DateCase{"Point", "15.3.26", "2026-03-15"},
                    DateCase{"Dash", "15-03-2026", "2026-03-15"}, DateCase{"Full", "15/03/2026", "2026-03-15"},
                    DateCase{"PastedIso", "2026-03-15", "2026-03-15"}, DateCase{"Blanks", " 15 ", "2026-03-15"},
                    DateCase{"Empty", "", ""}, DateCase{"Window79", "010179", "2079-01-01"},
                    DateCase{"Window80", "010180", "1980-01-01"}, DateCase{"Window00", "1/1/00", "2000-01-01"},
                    DateCase{"LeapDay", "2902", "2028-02-29", kLeapYear}, DateCase{"NoLeapDay", "2902", nullptr},
                    DateCase{"NoSuchDayInFebruary", "31", nullptr, kFebruary},
                    DateCase{"LastOfFebruary", "28", "2026-02-28", kFebruary}, DateCase{"Zero", "0", nullptr},
                    DateCase{"NoMonth13", "0113", nullptr}, DateCase{"AmbiguousThree", "153", nullptr},
                    DateCase{"AmbiguousFive", "15326", nullptr}, DateCase{"MistypedYear", "15030206", nullptr},
                    DateCase{"ShortYearOfOne", "15/3/6", nullptr}, DateCase{"EmptyMonth", "15//26", nullptr},
                    DateCase{"OpenEnd", "15/", nullptr}, DateCase{"FourParts", "1/2/3/4", nullptr},
                    DateCase{"Letters", "15 marzo", nullptr}),
    [](const auto &p) { return std::string(p.param.name); });

/// A form with a field of the test's choice and a neighbour that takes the focus.
class FieldTest : public testing::Test {
  protected:
    FieldTest() : before_(SetUserInterface(&ui)), working_date_(CDateField::WorkingDate())
    {
        CDateField::SetWorkingDate(ParseDate("2026-03-10").value());
    }
    ~FieldTest() override
    {
        CDateField::SetWorkingDate(working_date_);
        SetUserInterface(before_);
        EXPECT_EQ(ui.Faults(), "");
    }

    template <typename Field, typename... Arguments>
    Field *Show(Arguments &&...arguments)
    {
        auto *field = new Field(std::forward<Arguments>(arguments)...);
        layout->addWidget(field);
        layout->addWidget(neighbour);
        QWidget::setTabOrder(field, neighbour);
        keys::Open(&form);
        field->setFocus();
        return field;
    }

    static void Paste(const QString &text)
    {
        QApplication::clipboard()->setText(text);
        keys::Press(Qt::Key_V, Qt::ControlModifier);
    }

    ScriptedUserInterface ui;
    QWidget form;
    QVBoxLayout *layout = new QVBoxLayout(&form);
    QLineEdit *neighbour = new QLineEdit(&form);

  private:
    UserInterface *before_;
    long working_date_;
};

using AmountFieldTest = FieldTest;

TEST_F(AmountFieldTest, PointOfTheKeypadIsTheComma)
{
    auto *amount = Show<CAmountField>();
    keys::Type("1.234");
    keys::Press(Qt::Key_Period, Qt::KeypadModifier);
    keys::Type("5");
    EXPECT_EQ(FromQt(amount->text()), "1.234,5");
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(FromQt(amount->text()), "1.234,50");
    EXPECT_EQ(amount->Value(), 1234.5);
    keys::Type("7"); // the text is no more selected: what was typed goes behind it
    EXPECT_EQ(FromQt(amount->text()), "1.234,507");
}

TEST_F(AmountFieldTest, EnteringSelectsAllSoThatTypingReplaces)
{
    auto *amount = Show<CAmountField>();
    amount->SetValue(99);
    neighbour->setFocus();
    amount->setFocus(Qt::OtherFocusReason);
    keys::Type("100+22");
    EXPECT_EQ(amount->Value(), 122) << "a sum counts before it is left";
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(FromQt(amount->text()), "122,00");
}

TEST_F(AmountFieldTest, OnlyTheUserMarksItModified)
{
    auto *amount = Show<CAmountField>();
    amount->SetValue(5);
    EXPECT_FALSE(amount->IsModified());
    keys::Type("6");
    EXPECT_TRUE(amount->IsModified());
    EXPECT_TRUE(amount->Complete());
    EXPECT_TRUE(amount->IsModified()) << "completing is not a change of the program";
    amount->SetModified(false);
    EXPECT_TRUE(amount->Complete());
    EXPECT_FALSE(amount->IsModified());
}

TEST_F(AmountFieldTest, RefusesWhatIsNoAmountOrOutOfRange)
{
    auto *amount = Show<CAmountField>();
    amount->SetRange(-10, 10);
    amount->SetValue(5);
    amount->selectAll();
    keys::Type("1x2"); // the letter is not taken at all
    EXPECT_EQ(FromQt(amount->text()), "12");
    EXPECT_FALSE(amount->Complete());
    amount->selectAll();
    keys::Type("3/0");
    EXPECT_FALSE(amount->Complete());
    EXPECT_EQ(FromQt(amount->text()), "3/0") << "the text stays as typed";
    EXPECT_EQ(amount->Value(), 5);
    amount->selectAll();
    keys::Type("-10,01");
    EXPECT_FALSE(amount->Complete());
    amount->selectAll();
    keys::Type("-10");
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(amount->Value(), -10);
}

TEST_F(AmountFieldTest, ZeroIsEmptyUnlessAskedFor)
{
    auto *amount = Show<CAmountField>();
    amount->SetValue(5);
    amount->selectAll();
    keys::Press(Qt::Key_Delete);
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(amount->Value(), 0);
    EXPECT_EQ(FromQt(amount->text()), "");
    amount->SetBlankZero(false);
    EXPECT_EQ(FromQt(amount->text()), "0,00");
}

TEST_F(AmountFieldTest, TakesACellOfASpreadsheetAndAPriceOfAPage)
{
    auto *amount = Show<CAmountField>();
    Paste("1,234.56\n");
    EXPECT_TRUE(amount->IsModified());
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(amount->Value(), 1234.56);
    amount->selectAll();
    Paste(QStringLiteral("1.234,57\u00A0€"));
    EXPECT_TRUE(amount->Complete());
    EXPECT_EQ(amount->Value(), 1234.57);
    amount->selectAll();
    Paste("12\t13");
    EXPECT_FALSE(amount->Complete()) << "two cells are no amount";
}

TEST_F(AmountFieldTest, DecimalsThatAreNotShownSurviveUntouched)
{
    auto *year = Show<CAmountField>(0);
    year->SetValue(2026);
    EXPECT_EQ(FromQt(year->text()), "2026") << "years have no thousands point";
    year->SetValue(22.5);
    EXPECT_EQ(year->Value(), 22.5);
    EXPECT_TRUE(year->Complete());
    EXPECT_EQ(year->Value(), 22.5);
}

struct DateKeysCase {
    const char *name;
    const char *before; ///< ISO, "" = empty
    const char *typed;
    const char *after;
};

void PrintTo(const DateKeysCase &c, std::ostream *out)
{
    *out << '"' << c.typed << "\" on \"" << c.before << '"';
}

class DateKeysTest : public FieldTest, public testing::WithParamInterface<DateKeysCase> {};

TEST_P(DateKeysTest, StepsAndCompletes)
{
    const DateKeysCase &c = GetParam();
    ui.today = ParseDate("2026-06-01").value();
    auto *date = Show<CDateField>();
    date->SetValue(ParseDate(c.before).value_or(0));
    date->selectAll();
    keys::Type(c.typed);
    EXPECT_TRUE(date->IsModified());
    EXPECT_EQ(FormatIsoDate(date->Value()), c.after) << "while typing";
    EXPECT_TRUE(date->Complete());
    EXPECT_EQ(FromQt(date->text()), FormatDate(ParseDate(c.after).value_or(0)));
    EXPECT_TRUE(date->IsModified());
}

INSTANTIATE_TEST_SUITE_P(Cases, DateKeysTest,
                         testing::Values(DateKeysCase{"Plus", "2026-12-31", "+", "2027-01-01"},
                                         DateKeysCase{"MinusTwice", "2026-03-01", "--", "2026-02-27"},
                                         DateKeysCase{"PlusOnADayJustTyped", "", "15+", "2026-03-16"},
                                         DateKeysCase{"PlusOnEmptyStartsFromTheWorkingDate", "", "+", "2026-03-11"},
                                         DateKeysCase{"MinusIsASeparatorWhileTyping", "2026-01-01", "5-4-26",
                                                      "2026-04-05"},
                                         DateKeysCase{"MinusBehindAWholeDateSteps", "", "15/3/26-", "2026-03-14"},
                                         DateKeysCase{"Today", "2020-01-01", "t", "2026-06-01"},
                                         DateKeysCase{"TodayInCapitals", "2020-01-01", "O", "2026-06-01"},
                                         DateKeysCase{"EndOfMonth", "2028-02-03", "f", "2028-02-29"},
                                         DateKeysCase{"EndOfMonthOfADayJustTyped", "", "0302f", "2026-02-28"}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST_F(FieldTest, DateLastTypedIsTheWorkingDate)
{
    auto *date = Show<CDateField>();
    date->SetValue(ParseDate("2020-01-01").value());
    EXPECT_TRUE(date->Complete());
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), "2026-03-10") << "a date shown is not a date typed";
    date->selectAll();
    keys::Type("0511");
    date->SetModified(false); // as a dialog does before it completes
    EXPECT_TRUE(date->Complete());
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), "2026-11-05");
}

struct FiscalYearCase {
    const char *name;
    long year;
    const char *today, *typed_before, *working; ///< ISO; an empty date was not typed
};
void PrintTo(const FiscalYearCase &c, std::ostream *out)
{
    *out << c.name;
}

class FiscalYearTest : public FieldTest, public testing::WithParamInterface<FiscalYearCase> {
  protected:
    ~FiscalYearTest() override { CDateField::SetFiscalYear(0); }
};

TEST_P(FiscalYearTest, WorkingDateStaysInTheYear)
{
    ui.today = ParseDate(GetParam().today).value();
    CDateField::SetFiscalYear(GetParam().year);
    auto *date = Show<CDateField>();
    if (*GetParam().typed_before != '\0') {
        keys::Type(ToQt(FormatDate(ParseDate(GetParam().typed_before).value())));
        EXPECT_TRUE(date->Complete());
    }
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), GetParam().working);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FiscalYearTest,
    testing::Values( // name, year, today, typed before, working date
        FiscalYearCase{"TodayInTheYear", 2026, "2026-06-01", "", "2026-06-01"},
        FiscalYearCase{"YearBefore", 2025, "2026-06-01", "", "2025-12-31"},
        FiscalYearCase{"YearAhead", 2027, "2026-06-01", "", "2027-01-01"},
        FiscalYearCase{"DateOfTheYearMoves", 2025, "2026-06-01", "2025-02-03", "2025-02-03"},
        FiscalYearCase{"FirstOfTheYearMoves", 2025, "2026-06-01", "2025-01-01", "2025-01-01"},
        FiscalYearCase{"LastOfTheYearBeforeDoesNot", 2025, "2026-06-01", "2024-12-31", "2025-12-31"},
        FiscalYearCase{"DateOfTodayOutsideTheYearDoesNot", 2025, "2026-06-01", "2026-06-01", "2025-12-31"},
        FiscalYearCase{"WithoutAYearTheOneOfToday", 0, "2026-06-01", "2026-02-03", "2026-02-03"},
        FiscalYearCase{"WithoutAYearNoBirthday", 0, "2026-06-01", "1962-02-03", "2026-06-01"},
        FiscalYearCase{"NoSuchYear", 20266, "2026-06-01", "", "2026-06-01"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST_F(FieldTest, FiscalYearForgetsTheDatesTypedBefore)
{
    ui.today = ParseDate("2026-06-01").value();
    CDateField::SetWorkingDate(ParseDate("2026-03-10").value());
    CDateField::SetFiscalYear(2026);
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), "2026-06-01");
    CDateField::SetFiscalYear(0);
}

struct MonthCase {
    const char *before;
    int key;
    const char *after; ///< ISO
};
void PrintTo(const MonthCase &c, std::ostream *out)
{
    *out << c.before << (c.key == Qt::Key_Up ? " up" : " down");
}

class MonthKeyTest : public FieldTest, public testing::WithParamInterface<MonthCase> {};

TEST_P(MonthKeyTest, StepsToTheSameDayOfTheMonth)
{
    auto *date = Show<CDateField>();
    date->SetValue(ParseDate(GetParam().before).value_or(0));
    keys::Press(GetParam().key, Qt::ControlModifier);
    EXPECT_EQ(FormatIsoDate(date->Value()), GetParam().after);
    EXPECT_TRUE(date->IsModified());
    EXPECT_TRUE(date->hasFocus());
    date->Protect(true);
    keys::Press(GetParam().key, Qt::ControlModifier);
    EXPECT_EQ(FormatIsoDate(date->Value()), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MonthKeyTest,
    testing::Values( // working date is 10 March 2026
        MonthCase{"2026-03-15", Qt::Key_Up, "2026-04-15"}, MonthCase{"2026-03-15", Qt::Key_Down, "2026-02-15"},
        MonthCase{"2026-12-31", Qt::Key_Up, "2027-01-31"}, MonthCase{"2026-01-31", Qt::Key_Up, "2026-02-28"},
        MonthCase{"2028-03-31", Qt::Key_Down, "2028-02-29"}, MonthCase{"2026-01-05", Qt::Key_Down, "2025-12-05"},
        MonthCase{"2026-03-31", Qt::Key_Up, "2026-04-30"}, MonthCase{"", Qt::Key_Down, "2026-02-10"}));

TEST_F(FieldTest, DateThatIsNoneStaysAsTyped)
{
    auto *date = Show<CDateField>();
    date->SetValue(ParseDate("2026-01-01").value());
    date->selectAll();
    keys::Type("3202");
    EXPECT_FALSE(date->Complete());
    EXPECT_EQ(FromQt(date->text()), "3202");
    EXPECT_EQ(FormatIsoDate(date->Value()), "2026-01-01") << "the last date that could be read";
    date->selectAll();
    keys::Press(Qt::Key_Delete);
    EXPECT_TRUE(date->Complete());
    EXPECT_EQ(date->Value(), 0);
}

TEST_F(FieldTest, TextIsCutToItsCharactersNotToTheUnitsOfItsEncoding)
{
    auto *text = Show<CTextField>(4U);
    text->SetValue("perché no");
    EXPECT_EQ(text->Value(), "perc");
    text->selectAll();
    Paste(QStringLiteral("a😀è😀b"));
    EXPECT_EQ(text->Value(), "a😀è😀");
    EXPECT_TRUE(text->IsModified());
    text->setCursorPosition(1);
    keys::Type("x");
    EXPECT_EQ(text->Value(), "a😀è😀") << "a full field takes no more, and loses nothing at its end";
    text->SetUpperCase(true);
    text->clear();
    keys::Type("rm");
    Paste(QStringLiteral("à\n"));
    EXPECT_EQ(text->Value(), "RMÀ") << "and a line end is no part of a line";
}

TEST_F(FieldTest, NoteIsCutAndGoesOnWithTab)
{
    auto *note = Show<CNoteField>(5U);
    note->SetValue("uno");
    EXPECT_FALSE(note->IsModified());
    note->moveCursor(QTextCursor::Start);
    keys::Type("a");
    keys::Press(Qt::Key_Return);
    keys::Type("b");
    EXPECT_EQ(note->Value(), "a\nuno");
    EXPECT_TRUE(note->IsModified());
    keys::Press(Qt::Key_Tab);
    EXPECT_TRUE(neighbour->hasFocus());
}

TEST_F(FieldTest, FlagIsModifiedByTheUserOnly)
{
    auto *flag = Show<CFlagField>("&Attivo");
    flag->SetValue(1);
    EXPECT_FALSE(flag->IsModified());
    keys::Press(Qt::Key_Space);
    EXPECT_EQ(flag->Value(), 0);
    EXPECT_TRUE(flag->IsModified());
}

TEST_F(FieldTest, ChoiceIsMadeByFirstLetterAndKeepsUnknownValues)
{
    auto *choice = Show<CChoiceField>(CChoiceField::Choices{{"0", "Cliente"}, {"1", "Fornitore"}, {"2", "Nessuno"}});
    choice->SetCode(2);
    EXPECT_FALSE(choice->IsModified());
    keys::Type("F");
    EXPECT_EQ(choice->Code(), 1);
    EXPECT_TRUE(choice->IsModified());
    choice->SetValue("77");
    EXPECT_EQ(choice->Value(), "77");
    EXPECT_FALSE(choice->IsModified());
    choice->SetCode(0);
    EXPECT_EQ(choice->count(), 3) << "a stranger of one record is no choice in the next";
}

TEST_F(FieldTest, WheelPassingOverAChoiceChangesNothing)
{
    auto *choice = Show<CChoiceField>(CChoiceField::Choices{{"0", "Cliente"}, {"1", "Fornitore"}});
    neighbour->setFocus();
    QWheelEvent wheel(QPointF(5, 5), choice->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(choice, &wheel);
    EXPECT_EQ(choice->Code(), 0);
    EXPECT_FALSE(wheel.isAccepted()) << "the form scrolls instead";
}

TEST_F(FieldTest, ProtectedFieldIsPassedOverAndShowsItsValue)
{
    auto *amount = Show<CAmountField>();
    const QPalette free = amount->palette();
    amount->SetValue(5);
    amount->Protect(true);
    neighbour->setFocus();
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_FALSE(amount->hasFocus());
    amount->setFocus();
    keys::Type("6");
    keys::Press(Qt::Key_Period, Qt::KeypadModifier);
    EXPECT_EQ(FromQt(amount->text()), "5,00");
    EXPECT_EQ(amount->palette().color(QPalette::Base), QApplication::palette().color(QPalette::Window));

    ApplyTheme(Theme::Dark);
    keys::Settle();
    EXPECT_EQ(amount->palette().color(QPalette::Base), QApplication::palette().color(QPalette::Window));
    ApplyTheme(Theme::System);
    keys::Settle();

    amount->Protect(false);
    EXPECT_FALSE(amount->IsProtected());
    EXPECT_EQ(amount->palette().color(QPalette::Base), free.color(QPalette::Base));
    neighbour->setFocus();
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(amount->hasFocus());
}

TEST_F(FieldTest, AWidgetFindsItsFieldAsLongAsThereIsOne)
{
    auto *note = Show<CNoteField>(5U);
    EXPECT_EQ(FieldOf(note->viewport()), note);
    EXPECT_EQ(FieldOf(neighbour), nullptr);
    QDialog opened_by_the_field(note);
    EXPECT_EQ(FieldOf(&opened_by_the_field), nullptr);

    // While its widget is torn down the focus still moves, and the field is gone by then.
    CTarvoField *found = note;
    auto *dying = new CAmountField(2, &form);
    QObject::connect(qApp, &QApplication::focusChanged, &form, [&](QWidget *left, QWidget *) {
        if (left == dying) found = FieldOf(left);
    });
    dying->show();
    dying->setFocus();
    delete dying;
    EXPECT_EQ(found, nullptr);
}

} // namespace
