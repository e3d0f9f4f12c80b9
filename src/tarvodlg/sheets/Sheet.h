#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// One cell of a sheet. What the author formatted as a date is a number in the file; `is_date` tells it apart.
struct SheetCell {
    enum class Kind { Empty, Text, Number };
    Kind kind = Kind::Empty;
    bool is_date = false; ///< a Number that is formatted as a date; then `day` is set
    double number = 0;
    long day = 0;     ///< day number of a date, 0 = none
    std::string text; ///< UTF-8, as it stands; empty for numbers
};

/// Why a workbook could not be read, in Italian. `what` says more than the caller's own message.
class SheetError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the first sheet of a workbook, row by row: .xls (Excel 5 to 2003) and .xlsx, told apart by their content and
/// not by their name. Whatever is in the file, nothing is written, no link is followed, and memory stays bounded: a
/// compressed part that unfolds beyond a limit is refused.
class SheetReader {
  public:
    /// @throws SheetError when the file cannot be opened or is no workbook
    explicit SheetReader(const std::filesystem::path &file);
    ~SheetReader();

    /// Calls `each` with the number of every row (from 1) that has a cell, and its cells from column 1 on.
    /// @throws SheetError when the sheet is damaged
    void ForEachRow(const std::function<void(long row, const std::vector<SheetCell> &cells)> &each);

  private:
    struct Book;
    std::unique_ptr<Book> book_;
};
