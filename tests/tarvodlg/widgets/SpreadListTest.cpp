#include "tests/tarvodlg/widgets/SpreadSheetFixture.h"

namespace {

/// A grid without open cells.
class SpreadListTest : public SpreadSheetTest {};

TEST_F(SpreadListTest, ListIsSortedByKeyAsItalianReadsIt)
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

TEST_F(SpreadListTest, ClickOnATitleSortsAmountsAndTurnsThemRound)
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

TEST_F(SpreadListTest, ListIsWalkedSearchedAndOpenedByKeyboard)
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

TEST_F(SpreadListTest, SearchPrefersWhatBeginsWithTheText)
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

TEST_F(SpreadListTest, SumsStayRightToTheCent)
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

TEST_F(SpreadListTest, RowsTakeTheirColoursLocksAndDataAlong)
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

TEST_F(SpreadListTest, ColouredRowStaysColouredWhenRowsMove)
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

TEST_F(SpreadListTest, GridBecomesAListWhenAllIsLocked)
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

TEST_F(SpreadListTest, AMillionRowsAnswerAsTen)
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

TEST_F(SpreadListTest, AListFilledAgainAndAgainForgetsOldTexts)
{
    ShowList({"a", "b"});
    for (int fill = 0; fill < 300'000; ++fill) grid_->SetText(1 + fill % 2, 2, "Testo numero " + std::to_string(fill));
    EXPECT_EQ(grid_->Text(1, 2), "Testo numero 299998");
    EXPECT_EQ(grid_->Text(2, 2), "Testo numero 299999");
    grid_->SetText(1, 2, "Testo numero 299999");
    EXPECT_EQ(grid_->Text(1, 2), grid_->Text(2, 2));
}

TEST_F(SpreadListTest, FootStandsBelowTheRowsAndLeavesTheLastInSight)
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

TEST_F(SpreadListTest, WidthsAreRememberedByTitleInDigits)
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
