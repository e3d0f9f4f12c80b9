#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/TarvoDialog.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QHeaderView>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace {

using Type = CSpreadSheet::Type;
using Place = std::pair<long, long>; ///< row, column

/// A grid between two fields, in an open window.
class SpreadSheetTest : public testing::Test {
  protected:
    SpreadSheetTest() : before_(SetUserInterface(&ui_))
    {
        auto *layout = new QVBoxLayout(&window_);
        layout->addWidget(above_ = new QLineEdit);
        layout->addWidget(grid_ = new CSpreadSheet);
        layout->addWidget(below_ = new QLineEdit);
        CDateField::SetWorkingDate(DateToJulian(1, 6, 2026));
    }
    ~SpreadSheetTest() override { SetUserInterface(before_); }

    /// The VAT lines of an entry: the description and the tax are shown, not typed.
    void ShowVatLines()
    {
        grid_->SetColumns({{.title = "Cod. IVA", .type = Type::Code, .width = 5},
                           {.title = "Descrizione", .width = 20, .locked = true, .stretch = true},
                           {.title = "Imponibile", .type = Type::Amount, .width = 14, .sum = true},
                           {.title = "Imposta", .type = Type::Amount, .width = 14, .sum = true},
                           {.title = "Data", .type = Type::Date, .width = 10}});
        grid_->SetRowCount(7);
        Show();
    }

    /// The account rows of an entry.
    void ShowRows(long rows = 100)
    {
        grid_->SetColumns({{.title = "Mas", .type = Type::Code, .width = 3},
                           {.title = "Con", .type = Type::Code, .width = 3},
                           {.title = "Sot", .type = Type::Code, .width = 6},
                           {.title = "Descrizione", .width = 24, .locked = true},
                           {.title = "D/A", .type = Type::Choice, .width = 3, .choices = {"D", "A"}},
                           {.title = "Importo", .type = Type::Amount, .width = 14, .sum = true},
                           {.title = "Causale", .width = 12, .max_characters = 5},
                           {.title = "Partita", .locked = true},
                           {.title = "Auto", .type = Type::Choice, .width = 4, .choices = {"SI", "NO"}},
                           {.title = "Saldo", .type = Type::Amount, .width = 14, .locked = true}});
        grid_->SetRowCount(rows);
        Show();
    }

    void ShowList(const std::vector<std::string> &names)
    {
        grid_->SetColumns({{.title = "Codice", .type = Type::Code, .width = 6, .locked = true},
                           {.title = "Ragione sociale", .width = 30, .locked = true, .stretch = true},
                           {.title = "Saldo", .type = Type::Amount, .width = 14, .locked = true, .sum = true}});
        grid_->SetRowCount(static_cast<long>(names.size()));
        for (long row = 1; row <= grid_->RowCount(); ++row) {
            grid_->SetLong(row, 1, row * 10);
            grid_->SetText(row, 2, names[static_cast<std::size_t>(row - 1)]);
        }
        Show();
        grid_->SetActiveCell(1, 2);
        grid_->setFocus();
    }

    void Show()
    {
        window_.resize(1000, 400);
        keys::Open(&window_);
    }
    void Enter(long row, long column)
    {
        grid_->setFocus();
        grid_->SetActiveCell(row, column);
    }
    Place Active() const { return {grid_->ActiveRow(), grid_->ActiveColumn()}; }
    QLineEdit *Editor() const { return grid_->IsEditing() ? grid_->viewport()->findChild<QLineEdit *>() : nullptr; }
    void Click(long row, long column)
    {
        const QPoint at = grid_->visualRect(grid_->model()->index(int(row - 1), int(column - 1))).center();
        QTest::mouseClick(grid_->viewport(), Qt::LeftButton, {}, at);
        keys::Settle();
    }

    ScriptedUserInterface ui_;
    UserInterface *before_;
    QWidget window_;
    QLineEdit *above_, *below_;
    CSpreadSheet *grid_;
};

/// The names of a list from the top, as they stand.
std::vector<std::string> NamesOf(const CSpreadSheet &grid)
{
    std::vector<std::string> names;
    for (long row = 1; row <= grid.RowCount(); ++row) names.push_back(grid.Text(row, 2));
    return names;
}

TEST_F(SpreadSheetTest, ListIsSortedByKeyAsItalianReadsIt)
{
    ShowList({"zeta", "Fattura 10", "", "Èlite", "Fattura 9", "elba", "Zeta"});
    grid_->AllowSorting(true);
    grid_->SetRowData(4, 77);
    grid_->SetActiveCell(4, 2);
    std::vector<long> told;
    grid_->on_row_changed = [&](long row) { told.push_back(row); };
    keys::Press(Qt::Key_Down, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(NamesOf(*grid_),
              (std::vector<std::string>{"elba", "Èlite", "Fattura 9", "Fattura 10", "zeta", "Zeta", ""}));
    EXPECT_EQ(Active(), Place(2, 2)) << "the active row goes along";
    EXPECT_EQ(grid_->RowData(2), 77);
    EXPECT_EQ(grid_->Long(2, 1), 40);
    EXPECT_EQ(told, std::vector<long>()) << "the user did not move";
    keys::Press(Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(NamesOf(*grid_),
              (std::vector<std::string>{"Zeta", "zeta", "Fattura 10", "Fattura 9", "Èlite", "elba", ""}))
        << "empty ones stay last";
    grid_->InsertRow(1);
    EXPECT_EQ(grid_->Text(1, 2), "");
    EXPECT_FALSE(grid_->horizontalHeader()->isSortIndicatorShown());
}

TEST_F(SpreadSheetTest, ClickOnATitleSortsAmountsAndTurnsThemRound)
{
    ShowList({"a", "b", "c", "d", "e"});
    const double amounts[] = {10, -2, 0, 10};
    for (long row = 1; row <= 4; ++row) grid_->SetNumber(row, 3, amounts[row - 1]);
    QHeaderView *header = grid_->horizontalHeader();
    const auto click = [&](int column) {
        const QPoint at(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
        keys::Settle();
    };
    click(2);
    EXPECT_EQ(NamesOf(*grid_), (std::vector<std::string>{"a", "b", "c", "d", "e"})) << "not allowed";
    grid_->AllowSorting(true);
    click(2);
    EXPECT_EQ(NamesOf(*grid_), (std::vector<std::string>{"b", "c", "a", "d", "e"}));
    EXPECT_EQ(grid_->SumCents(3), 1800);
    EXPECT_EQ(Active(), Place(3, 2)) << "no column is selected";
    click(2);
    EXPECT_EQ(NamesOf(*grid_), (std::vector<std::string>{"a", "d", "c", "b", "e"})) << "equal ones stay in order";
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::DescendingOrder);
    click(0);
    EXPECT_EQ(NamesOf(*grid_), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    grid_->LockCell(1, 2, false); // now it is for entry
    click(2);
    keys::Press(Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(grid_->Text(1, 2), "a");
}

TEST_F(SpreadSheetTest, DateTypedInACellMovesTheWorkingMonthOfTheFields)
{
    ShowVatLines();
    Enter(1, 5);
    keys::Type("1504");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), "2026-04-15");
    Enter(2, 5);
    keys::Type("150425");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(FormatIsoDate(CDateField::WorkingDate()), "2026-04-15");
    Enter(3, 5);
    keys::Type("7");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(grid_->Text(3, 5), "07/04/2026");
}

TEST_F(SpreadSheetTest, VatLinesAreEnteredByKeyboardAlone)
{
    ShowVatLines();
    std::vector<Place> left;
    grid_->on_leave_cell = [&](long row, long column) {
        left.emplace_back(row, column);
        if (column == 1) grid_->SetText(row, 2, "Aliquota " + grid_->Text(row, 1));
        if (column == 4 && grid_->Text(row, 4).empty()) grid_->SetNumber(row, 4, grid_->Number(row, 3) * 0.22);
        return true;
    };
    above_->setFocus();
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(Active(), Place(1, 1));

    keys::Type("22");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Active(), Place(1, 3)) << "the description is locked";
    keys::Type("100+22");
    keys::Press(Qt::Key_Tab);
    keys::Press(Qt::Key_Enter, Qt::KeypadModifier); // the empty tax gets its proposal
    keys::Type("1503");
    keys::Press(Qt::Key_Return);

    EXPECT_EQ(Active(), Place(2, 1));
    EXPECT_THAT(left, testing::ElementsAre(Place(1, 1), Place(1, 3), Place(1, 4), Place(1, 5)));
    EXPECT_EQ(grid_->Text(1, 2), "Aliquota 22");
    EXPECT_EQ(grid_->Text(1, 3), "122,00");
    EXPECT_EQ(grid_->Text(1, 4), "26,84");
    EXPECT_EQ(grid_->Long(1, 5), DateToJulian(15, 3, 2026));
    EXPECT_EQ(grid_->SumCents(3), 12'200);
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Active(), Place(1, 5));
    EXPECT_EQ(ui_.beeps, 0);
}

TEST_F(SpreadSheetTest, AHundredRowsAreWalkedOverTheirOpenCellsOnly)
{
    ShowRows();
    for (long row = 1; row <= 100; ++row) grid_->LockCell(row, 9, row % 2 == 0);
    grid_->LockCell(50, 8, false);
    std::vector<Place> left;
    grid_->on_leave_cell = [&](long row, long column) {
        left.emplace_back(row, column);
        return true;
    };
    bool is_forward = false;
    grid_->on_advance = [&](bool forward) { is_forward = forward; };
    Enter(1, 1);
    for (int presses = 0; presses < 1000 && !is_forward; ++presses) keys::Press(Qt::Key_Tab);

    std::vector<Place> open;
    for (long row = 1; row <= 100; ++row)
        for (const long column : {1, 2, 3, 5, 6, 7, 8, 9})
            if ((column != 8 || row == 50) && (column != 9 || row % 2 == 1)) open.emplace_back(row, column);
    EXPECT_TRUE(is_forward);
    EXPECT_EQ(left, open);
    EXPECT_EQ(Active(), Place(100, 7));
    EXPECT_TRUE(grid_->hasFocus());
}

struct Typing {
    const char *name;
    long column;
    const char *keys; ///< '#' is the point of the keypad
    const char *shown;
    int beeps;
};
void PrintTo(const Typing &typing, std::ostream *out)
{
    *out << typing.name;
}

class SpreadTypingTest : public SpreadSheetTest, public testing::WithParamInterface<Typing> {};

TEST_P(SpreadTypingTest, CellTakesWhatItsColumnHolds)
{
    const Typing &typing = GetParam();
    ShowRows(2);
    Enter(1, typing.column);
    for (const QChar c : QString::fromUtf8(typing.keys)) {
        if (c == u'#') {
            keys::Press(Qt::Key_Period, Qt::KeypadModifier);
        } else if (c == u'<') {
            keys::Press(Qt::Key_Backspace);
        } else {
            QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_unknown, QString(c), {});
            keys::Settle();
        }
    }
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(grid_->Text(1, typing.column), typing.shown);
    EXPECT_EQ(ui_.beeps, typing.beeps);
    EXPECT_EQ(grid_->IsEditing(), Active() == Place(1, typing.column)) << "a refused cell stays open";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SpreadTypingTest,
    testing::Values(Typing{"Code", 1, "120", "120", 0}, Typing{"CodeDropsLetters", 1, "1x2", "12", 1},
                    Typing{"CodeBeyondItsBits", 3, "9999999999", "", 1},
                    Typing{"AmountWithThousands", 6, "1.234,5", "1.234,50", 0},
                    Typing{"AmountByKeypad", 6, "12#5", "12,50", 0},
                    Typing{"AmountBeginsWithKeypadPoint", 6, "#5", "0,50", 0},
                    Typing{"AmountRoundedToCents", 6, "10/3", "3,33", 0},
                    Typing{"AmountDividedByZero", 6, "10/0", "", 1}, Typing{"AmountZeroIsBlank", 6, "0", "", 0},
                    Typing{"AmountEmptied", 6, "5<", "", 0}, Typing{"TextCutToItsCharacters", 7, "però è", "però", 0},
                    Typing{"ChoiceByLetter", 5, "a", "A", 0}, Typing{"ChoiceToggledByBlank", 5, "a ", "D", 0},
                    Typing{"ChoiceOfAWord", 9, "n", "NO", 0}, Typing{"ChoiceUnknown", 9, "x", "", 1}),
    [](const auto &p) { return std::string(p.param.name); });

TEST_F(SpreadSheetTest, ARefusedCellStaysWithItsTextSelected)
{
    ShowRows();
    int changes = 0;
    grid_->on_change = [&](long, long) { ++changes; };
    grid_->on_leave_cell = [&](long row, long column) { return column != 1 || grid_->Long(row, 1) == 5; };
    Enter(1, 1);
    keys::Type("7");
    for (const int key : {Qt::Key_Return, Qt::Key_Tab, Qt::Key_Down, Qt::Key_Right, Qt::Key_PageDown}) {
        keys::Press(key);
        ASSERT_TRUE(Editor());
        EXPECT_EQ(Active(), Place(1, 1));
        EXPECT_EQ(Editor()->selectedText(), "7");
        EXPECT_TRUE(Editor()->hasFocus());
    }
    Click(3, 6);
    EXPECT_EQ(Active(), Place(1, 1));
    EXPECT_TRUE(Editor() && Editor()->hasFocus());
    below_->setFocus(Qt::MouseFocusReason);
    keys::Settle();
    EXPECT_TRUE(Editor() && Editor()->hasFocus()) << "nor by a press on another field";
    EXPECT_EQ(ui_.beeps, 7);
    EXPECT_EQ(changes, 1) << "the value changed once";

    keys::Type("5");
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(Active(), Place(2, 1));
    EXPECT_FALSE(grid_->IsEditing());
    EXPECT_TRUE(grid_->hasFocus());
}

TEST_F(SpreadSheetTest, EscGivesTheCellItsValueBack)
{
    ShowRows();
    grid_->SetNumber(1, 6, 10);
    double seen = 0;
    grid_->on_change = [&](long row, long column) { seen = grid_->Number(row, column); };
    Enter(1, 6);
    keys::Type("99");
    keys::Press(Qt::Key_Escape);
    EXPECT_EQ(grid_->Number(1, 6), 10);
    EXPECT_EQ(seen, 0) << "nothing was stored yet";

    grid_->on_leave_cell = [](long, long) { return false; };
    keys::Type("99");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(grid_->Number(1, 6), 99);
    keys::Press(Qt::Key_Escape);
    EXPECT_EQ(grid_->Number(1, 6), 10);
    EXPECT_EQ(seen, 10) << "what follows from the amount is worked out again";
    EXPECT_EQ(grid_->SumCents(6), 1'000);

    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(grid_, &escape);
    EXPECT_FALSE(escape.isAccepted()) << "without a cell being typed Esc is the dialog's";
}

TEST_F(SpreadSheetTest, TabPastTheEndsGoesToTheFieldsBeside)
{
    ShowVatLines();
    Enter(7, 5);
    keys::Type("30");
    keys::Press(Qt::Key_Tab);
    EXPECT_TRUE(below_->hasFocus());
    EXPECT_EQ(grid_->Text(7, 5), "30/06/2026");
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(Active(), Place(7, 5)) << "back to where the user was";
    grid_->SetActiveCell(1, 1);
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(above_->hasFocus());
}

TEST_F(SpreadSheetTest, TypedArrowsLeaveEditedOnesDoNot)
{
    ShowRows();
    Enter(2, 2);
    keys::Type("12");
    keys::Press(Qt::Key_Right);
    EXPECT_EQ(Active(), Place(2, 3));
    EXPECT_EQ(grid_->Long(2, 2), 12);
    keys::Type("34");
    keys::Press(Qt::Key_Up);
    EXPECT_EQ(Active(), Place(1, 3));

    grid_->SetText(1, 7, "fatt");
    grid_->SetActiveCell(1, 7);
    keys::Press(Qt::Key_Return, Qt::ControlModifier);
    keys::Press(Qt::Key_End);
    keys::Press(Qt::Key_Left);
    keys::Type("a");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(grid_->Text(1, 7), "fatat");
}

TEST_F(SpreadSheetTest, HandlersMayMoveTheUserAndTheRows)
{
    ShowRows();
    grid_->on_leave_cell = [&](long row, long column) {
        if (column == 1) grid_->SetActiveCell(row, 6);
        if (column == 6) {
            grid_->BeginUpdate();
            grid_->InsertRow(1);
            grid_->SetText(1, 4, "riga nuova");
            grid_->EndUpdate();
        }
        return true;
    };
    Enter(3, 1);
    keys::Type("4");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Active(), Place(3, 6)) << "the handler said where";
    keys::Type("8");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Active(), Place(4, 7)) << "the row went down by one";
    EXPECT_EQ(grid_->Number(4, 6), 8);
    EXPECT_EQ(grid_->Text(1, 4), "riga nuova");
    EXPECT_EQ(grid_->RowCount(), 101);
}

TEST_F(SpreadSheetTest, WhatAHandlerThrowsIsShownAndRefuses)
{
    ShowRows();
    bool is_down = true;
    grid_->on_change = [&](long, long) {
        if (is_down) throw std::runtime_error("rete assente");
    };
    Enter(1, 1);
    keys::Type("3");
    keys::Press(Qt::Key_Return);
    ASSERT_EQ(ui_.shown.size(), 1u);
    EXPECT_THAT(ui_.shown[0], testing::StartsWith("Errore imprevisto: rete assente"));
    EXPECT_EQ(Active(), Place(1, 1));
    is_down = false;
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Active(), Place(1, 2));
}

TEST_F(SpreadSheetTest, MouseAsksBeforeItLeaves)
{
    ShowRows();
    std::vector<Place> left, clicked, opened;
    grid_->on_leave_cell = [&](long row, long column) {
        left.emplace_back(row, column);
        return true;
    };
    grid_->on_click = [&](long row, long column) { clicked.emplace_back(row, column); };
    grid_->on_dbl_click = [&](long row, long column) { opened.emplace_back(row, column); };
    Enter(1, 1);
    keys::Type("12");
    Click(2, 4);
    EXPECT_EQ(grid_->Long(1, 1), 12);
    EXPECT_EQ(Active(), Place(2, 4));
    QTest::mouseDClick(grid_->viewport(), Qt::LeftButton, {}, grid_->visualRect(grid_->currentIndex()).center());
    keys::Press(Qt::Key_F4);
    EXPECT_THAT(left, testing::ElementsAre(Place(1, 1))) << "asked once, and not for a locked cell";
    EXPECT_THAT(clicked, testing::ElementsAre(Place(2, 4)));
    EXPECT_THAT(opened, testing::ElementsAre(Place(2, 4), Place(2, 4)));
}

TEST_F(SpreadSheetTest, KeysAreOfferedToTheDialogFirst)
{
    ShowRows(3);
    std::vector<int> offered;
    grid_->on_key_press = [&](long row, long, QKeyEvent *key) {
        offered.push_back(key->key());
        if (key->key() == Qt::Key_Insert) grid_->InsertRow(row);
        if (key->key() == Qt::Key_Delete) grid_->DeleteRow(row);
        return key->key() == Qt::Key_Insert || key->key() == Qt::Key_Delete;
    };
    Enter(2, 7);
    keys::Press(Qt::Key_Insert);
    EXPECT_EQ(grid_->RowCount(), 4);
    EXPECT_EQ(Active(), Place(3, 7));
    keys::Type("ab");
    keys::Press(Qt::Key_Delete);
    EXPECT_EQ(grid_->RowCount(), 4) << "in a cell Del deletes a letter";
    keys::Press(Qt::Key_Return);
    keys::Press(Qt::Key_Delete);
    EXPECT_EQ(grid_->RowCount(), 3);
    EXPECT_THAT(offered, testing::ElementsAre(Qt::Key_Insert, Qt::Key_A, Qt::Key_Return, Qt::Key_Delete));
}

TEST_F(SpreadSheetTest, DialogLeavesEnterAndEscToTheCell)
{
    CTarvoDialog dialog;
    auto *grid = new CSpreadSheet(&dialog);
    grid->resize(300, 200);
    grid->SetColumns({{.title = "Mas", .type = Type::Code}, {.title = "Testo"}});
    grid->SetRowCount(2);
    int saved = 0;
    dialog.AddCommand({.caption = "F2 - &Salva", .run = [&] { ++saved; }});
    keys::Open(&dialog);
    grid->setFocus();
    grid->on_leave_cell = [&](long row, long) { return grid->Long(row, 1) != 9; };
    keys::Type("5");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(grid->ActiveColumn(), 2);
    keys::Type("abc");
    keys::Press(Qt::Key_Escape);
    EXPECT_EQ(grid->Text(1, 2), "");
    EXPECT_TRUE(dialog.isVisible());
    grid->SetActiveCell(2, 1);
    keys::Type("9");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(saved, 0) << "the cell being typed is checked first";
    keys::Type("8");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(saved, 1);
    EXPECT_EQ(grid->Long(2, 1), 8);
}

TEST_F(SpreadSheetTest, ListIsWalkedSearchedAndOpenedByKeyboard)
{
    ShowList({"Rossi Mario", "Bianchi", "Caffè Nero", "Verdi & Rossi", "CAFFETTERIA", "Rosso"});
    std::vector<long> rows;
    grid_->on_row_changed = [&](long row) { rows.push_back(row); };
    Place opened;
    grid_->on_dbl_click = [&](long row, long column) { opened = {row, column}; };
    keys::Press(Qt::Key_End);
    keys::Press(Qt::Key_Home);
    keys::Press(Qt::Key_Down);
    EXPECT_THAT(rows, testing::ElementsAre(6, 1, 2));
    keys::Type("caffe");
    EXPECT_EQ(grid_->ActiveRow(), 3) << "whatever the accents";
    keys::Press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(grid_->ActiveRow(), 5) << "whatever the case";
    keys::Type("z");
    EXPECT_EQ(ui_.beeps, 1);
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(opened, Place(5, 2));
    keys::Press(Qt::Key_Left);
    keys::Type("x");
    keys::Press(Qt::Key_Tab);
    EXPECT_TRUE(below_->hasFocus());
    EXPECT_FALSE(grid_->IsEditing());
}

TEST_F(SpreadSheetTest, SearchPrefersWhatBeginsWithTheText)
{
    ShowList({"Bar Rossi", "Alfa", "Rossi"});
    keys::Type("rossi");
    EXPECT_EQ(grid_->ActiveRow(), 3);
    EXPECT_EQ(grid_->FindText(1, 2, "ROSSI"), 1) << "in order";
    EXPECT_EQ(grid_->FindText(2, 2, "ROSSI"), 3);
    EXPECT_EQ(grid_->FindText(1, 2, "rossini"), 0);
    EXPECT_EQ(grid_->FindText(1, 2, ""), 0);
    grid_->SetNumber(2, 3, 1234.5);
    EXPECT_EQ(grid_->FindText(1, 3, "1234,5"), 2);
    EXPECT_EQ(grid_->FindText(1, 3, "1.234,50"), 2);
    EXPECT_EQ(grid_->FindText(1, 1, "20"), 2);
}

TEST_F(SpreadSheetTest, SumsStayRightToTheCent)
{
    ShowRows(10);
    for (long row = 1; row <= 10; ++row) grid_->SetNumber(row, 6, 0.1);
    EXPECT_EQ(grid_->SumCents(6), 100);
    std::mt19937 random(7);
    for (int step = 0; step < 2000; ++step) {
        const long row = 1 + static_cast<long>(random() % static_cast<unsigned long>(grid_->RowCount()));
        switch (random() % 6) {
        case 0:
            grid_->InsertRow(row);
            break;
        case 1:
            if (grid_->RowCount() > 5) grid_->DeleteRow(row);
            break;
        case 2:
            grid_->ClearCell(row, 6);
            break;
        case 3:
            grid_->SetRowCount(std::max(5L, grid_->RowCount() - 2));
            break;
        default:
            grid_->SetNumber(row, 6, static_cast<double>(random() % 1'000'000) / 100 - 5'000);
        }
    }
    long long cents = 0;
    for (long row = 1; row <= grid_->RowCount(); ++row) cents += std::llround(grid_->Number(row, 6) * 100);
    EXPECT_EQ(grid_->SumCents(6), cents);
    grid_->Clear();
    EXPECT_EQ(grid_->SumCents(6), 0);
}

TEST_F(SpreadSheetTest, RowsTakeTheirColoursLocksAndDataAlong)
{
    ShowRows(3);
    const auto fingerprint = [&] {
        std::vector<std::string> rows;
        for (long row = 1; row <= grid_->RowCount(); ++row)
            rows.push_back(grid_->Text(row, 4) + (grid_->IsLocked(row, 6) ? " chiusa " : " aperta ") +
                           std::to_string(grid_->RowData(row)));
        return rows;
    };
    grid_->SetText(2, 4, "b");
    grid_->SetRowData(2, 42);
    grid_->LockCell(2, 6, true);
    grid_->SetRowColor(2, Qt::red);
    grid_->SetActiveCell(2, 5);
    grid_->InsertRow(1);
    EXPECT_THAT(fingerprint(), testing::ElementsAre(" aperta 0", " aperta 0", "b chiusa 42", " aperta 0"));
    EXPECT_EQ(Active(), Place(3, 5)) << "the user stays on his row";
    grid_->DeleteRow(2);
    grid_->DeleteRow(1);
    EXPECT_THAT(fingerprint(), testing::ElementsAre("b chiusa 42", " aperta 0"));
    grid_->LockColumn(6, true);
    grid_->LockCell(2, 6, false);
    EXPECT_THAT(fingerprint(), testing::ElementsAre("b chiusa 42", " aperta 0"));
    grid_->DeleteRow(1);
    grid_->SetRowCount(2);
    EXPECT_THAT(fingerprint(), testing::ElementsAre(" aperta 0", " chiusa 0"));
    EXPECT_EQ(grid_->Text(9, 4), "");
    grid_->SetText(9, 4, "fuori"); // not written, no harm
    EXPECT_THROW(grid_->SetLong(1, 1, 5'000'000'000), std::out_of_range);
}

/// The first pixel of a row's text that is neither light nor grey tells its colour.
bool HasRedText(CSpreadSheet *grid, long row)
{
    const QImage image = grid->viewport()->grab(grid->visualRect(grid->model()->index(int(row - 1), 3))).toImage();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (const QColor c = image.pixelColor(x, y); c.red() > c.green() + 80 && c.red() > c.blue() + 80)
                return true;
    return false;
}

TEST_F(SpreadSheetTest, ColouredRowStaysColouredWhenRowsMove)
{
    ShowRows(4);
    for (long row = 1; row <= 4; ++row) grid_->SetText(row, 4, "MMMMM");
    grid_->SetRowColor(2, Qt::red);
    grid_->InsertRow(1);
    grid_->SetText(1, 4, "MMMMM");
    keys::Settle();
    for (long row = 1; row <= 5; ++row) EXPECT_EQ(HasRedText(grid_, row), row == 3) << row;
    grid_->SetRowColor(3, {});
    EXPECT_FALSE(HasRedText(grid_, 3));
}

TEST_F(SpreadSheetTest, GridBecomesAListWhenAllIsLocked)
{
    ShowRows(5);
    for (long column = 1; column <= 10; ++column) grid_->LockColumn(column, true);
    grid_->SetActiveCell(2, 1);
    EXPECT_EQ(grid_->selectionBehavior(), QAbstractItemView::SelectRows);
    EXPECT_EQ(grid_->selectionModel()->selectedRows().size(), 1);
    grid_->LockCell(4, 6, false);
    EXPECT_EQ(grid_->selectionBehavior(), QAbstractItemView::SelectItems);
    grid_->setFocus();
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Active(), Place(4, 6));
}

TEST_F(SpreadSheetTest, AMillionRowsAnswerAsTen)
{
    constexpr long kRows = 1'000'000;
    ShowList({"uno"});
    grid_->BeginUpdate();
    grid_->SetRowCount(kRows);
    for (long row = 1; row <= kRows; ++row) {
        grid_->SetLong(row, 1, row);
        grid_->SetText(row, 2, "Cliente " + std::to_string(row % 1000));
        grid_->SetNumber(row, 3, 0.01);
    }
    EXPECT_EQ(grid_->model()->rowCount(), 1) << "the view learns of it once";
    grid_->EndUpdate();
    EXPECT_EQ(grid_->model()->rowCount(), kRows);
    EXPECT_EQ(grid_->SumCents(3), kRows);
    keys::Press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(grid_->ActiveRow(), kRows);
    const QRect last = grid_->visualRect(grid_->currentIndex());
    EXPECT_LE(last.bottom(), grid_->viewport()->height()) << "the last row is in sight, whole";
    keys::Type("cliente 77");
    EXPECT_EQ(grid_->ActiveRow(), 77) << "the search goes around";
    grid_->InsertRow(1);
    EXPECT_EQ(grid_->ActiveRow(), 78);
    EXPECT_EQ(grid_->Long(kRows + 1, 1), kRows);
    grid_->Clear();
    EXPECT_EQ(grid_->ActiveRow(), 0);
}

TEST_F(SpreadSheetTest, AListFilledAgainAndAgainForgetsOldTexts)
{
    ShowList({"a", "b"});
    for (int fill = 0; fill < 300'000; ++fill) grid_->SetText(1 + fill % 2, 2, "Testo numero " + std::to_string(fill));
    EXPECT_EQ(grid_->Text(1, 2), "Testo numero 299998");
    EXPECT_EQ(grid_->Text(2, 2), "Testo numero 299999");
    grid_->SetText(1, 2, "Testo numero 299999");
    EXPECT_EQ(grid_->Text(1, 2), grid_->Text(2, 2));
}

TEST_F(SpreadSheetTest, FootStandsBelowTheRowsAndLeavesTheLastInSight)
{
    ShowRows();
    const int rows_before = grid_->viewport()->height();
    grid_->ShowSums(true);
    grid_->SetFootText(1, "Totali");
    keys::Settle();
    auto *foot = [&] {
        for (QWidget *child : grid_->findChildren<QWidget *>())
            if (child->accessibleName() == "Totali") return child;
        return static_cast<QWidget *>(nullptr);
    }();
    ASSERT_TRUE(foot && foot->isVisible());
    EXPECT_LT(grid_->viewport()->height(), rows_before);
    EXPECT_EQ(foot->geometry().top(), grid_->viewport()->geometry().bottom() + 1);
    Enter(100, 1);
    keys::Settle();
    EXPECT_LE(grid_->visualRect(grid_->currentIndex()).bottom(), grid_->viewport()->height());
}

TEST_F(SpreadSheetTest, WidthsAreRememberedByTitleInDigits)
{
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    QCoreApplication::setOrganizationName("prova");
    std::vector<CSpreadSheet::Column> columns = {{.title = "D/A = segno", .width = 4},
                                                 {.title = "Importo", .width = 14}};
    {
        CSpreadSheet first;
        first.SetColumns(columns);
        first.RememberLayout("righe");
        first.horizontalHeader()->resizeSection(0, 333);
    }
    std::swap(columns[0], columns[1]);
    CSpreadSheet second;
    second.RememberLayout("righe");
    second.SetColumns(columns);
    EXPECT_NEAR(second.horizontalHeader()->sectionSize(1), 333, 2);
    EXPECT_NE(second.horizontalHeader()->sectionSize(0), 333);
}

} // namespace
