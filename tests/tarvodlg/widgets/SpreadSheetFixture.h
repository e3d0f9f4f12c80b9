#pragma once

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"
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
inline std::vector<std::string> NamesOf(const CSpreadSheet &grid)
{
    std::vector<std::string> names;
    for (long row = 1; row <= grid.RowCount(); ++row) names.push_back(grid.Text(row, 2));
    return names;
}
