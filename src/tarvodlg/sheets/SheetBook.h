#pragma once

#include "tarvodlg/sheets/Sheet.h"

#include <string>
#include <string_view>

// Bounds of what is read. A balance list of a large company has some ten thousand cells; what lies far beyond is a file
// made to hurt, or the wrong one.
inline constexpr std::size_t kSheetFileBytesMax = 50'000'000;
inline constexpr std::size_t kSheetCellsMax = 500'000;
inline constexpr long kSheetColumnsMax = 256; ///< cells further right are left out, as in the older format

inline constexpr const char *kSheetDamaged = "Il foglio è danneggiato o incompleto.";
inline constexpr const char *kSheetTooLarge = "Il foglio è troppo grande.";
inline constexpr const char *kSheetProtected = "Il foglio è protetto da una password: toglierla e salvarlo di nuovo.";
inline constexpr const char *kNoWorksheet = "La cartella di lavoro non contiene fogli di celle.";

using SheetRowFunction = std::function<void(long row, const std::vector<SheetCell> &cells)>;

/// An opened workbook of one format.
class SheetBook {
  public:
    virtual ~SheetBook() = default;
    virtual void ForEachRow(const SheetRowFunction &each) = 0;
};

/// @param bytes  the whole file, a compound one. @throws SheetError
std::unique_ptr<SheetBook> OpenBiffBook(const std::string &bytes);
/// @param bytes  the whole file, an archive. @throws SheetError
std::unique_ptr<SheetBook> OpenXlsxBook(std::string bytes);

/// Puts cells that come one by one into rows, with the gaps between them filled. Empty cells make no row.
class RowAssembler {
  public:
    explicit RowAssembler(const SheetRowFunction &each) : each_(each) {}

    /// Cells of a row come together. @param row, column  from 1. @throws SheetError when there are too many
    void Put(long row, long column, SheetCell cell);
    void Finish(); ///< hands over the last row

  private:
    const SheetRowFunction &each_;
    long row_ = 0;
    std::size_t count_ = 0;
    std::vector<SheetCell> cells_;
};

/// What a cell can hold, 32767 characters: one text without end in every cell of a row must not fill the memory.
std::string CutToCell(std::string text);
SheetCell TextCell(std::string text); ///< Empty for an empty text
/// What a sheet shows for a truth value: "VERO" or "FALSO".
SheetCell TruthCell(bool value);
