#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/SpreadStore.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QLabel;

/// A column of a grid that shows details of a document.
struct DetailColumn {
    CSpreadSheet::Column column;
    /// What row `index`, from 0, has there: a long for Code and Date, a double for Amount, a text for Text; nothing is
    /// an empty cell. A text may come in several lines, it is shown on one.
    std::function<SpreadValue(std::size_t index)> value;
    /// A column that is not there when none of the rows has anything in it; its room is the others'.
    bool is_optional = false;
    /// Of Amount: as many decimals as the values have, up to these. Prices have up to eight, most of them two.
    int decimals_max = 0;
};

/// "22,00%"
std::string PercentText(double percent);
/// A double, or an empty cell.
SpreadValue AmountCell(const std::optional<double> &amount);

/// Shows other details: columns and rows anew, the first row active. Tens of thousands of rows take no noticeable time.
void ShowDetails(CSpreadSheet *grid, std::vector<DetailColumn> columns, std::size_t rows);

/// A text of the program below a grid: wraps, can be copied with the mouse.
QLabel *DetailNote(QWidget *page);
void ShowNote(QLabel *note, const std::string &text); ///< an empty text takes no room
