#include "tests/tarvodlg/widgets/SpreadSheetFixture.h"

namespace {

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

} // namespace
