#include "tarvodlg/sheets/SheetBook.h"

#include "tarvodlg/base/Text.h"

void RowAssembler::Put(long row, long column, SheetCell cell)
{
    if (cell.kind == SheetCell::Kind::Empty || column > kSheetColumnsMax) return;
    if (++count_ > kSheetCellsMax) throw SheetError(kSheetTooLarge);
    if (row != row_) Finish();
    row_ = row;
    if (cells_.size() < static_cast<std::size_t>(column)) cells_.resize(static_cast<std::size_t>(column));
    cells_[static_cast<std::size_t>(column - 1)] = std::move(cell);
}

void RowAssembler::Finish()
{
    if (!cells_.empty()) each_(row_, cells_);
    cells_.clear();
}

std::string CutToCell(std::string text)
{
    constexpr std::size_t kCharactersMax = 32767;
    if (text.size() > kCharactersMax) text.resize(Utf8Prefix(text, kCharactersMax).size());
    return text;
}

SheetCell TextCell(std::string text)
{
    SheetCell cell;
    if (text.empty()) return cell;
    cell.kind = SheetCell::Kind::Text;
    cell.text = CutToCell(std::move(text));
    return cell;
}

SheetCell TruthCell(bool value)
{
    return TextCell(value ? "VERO" : "FALSO");
}
