#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Equal texts once, each behind a number. A list of a million rows repeats most of its texts (customers, causali), so
/// a cell costs four bytes.
class TextPool {
  public:
    TextPool() { Clear(); }

    /// @return the text's number; 0 is the empty text. @throws std::length_error beyond 4 GB of different texts
    std::uint32_t Intern(std::string_view text);
    /// Holds until the next Intern or Clear.
    std::string_view At(std::uint32_t id) const;
    std::size_t Count() const { return starts_.size() - 1; } ///< the empty text included
    void Clear();

  private:
    void Grow();

    std::vector<char> bytes_;
    std::vector<std::uint32_t> starts_; ///< of text i; the next one's start is its end
    std::vector<std::uint32_t> slots_;  ///< open hash table of numbers, 0 = free; the size is a power of two
};

/// What a cell holds; nothing is an empty cell.
using SpreadValue = std::variant<std::monostate, long, double, std::string>;

enum class SpreadKind { Number, Amount, Text };

/// The cells of a grid, column by column, with what belongs to its rows. Rows and columns count from 0 here and must
/// exist. What few grids use (colours, locks of single cells, data behind the rows) takes no memory until it is used.
class SpreadStore {
  public:
    void SetColumns(const std::vector<SpreadKind> &kinds); ///< drops all rows

    long Rows() const { return rows_; }
    int Columns() const { return static_cast<int>(columns_.size()); }
    bool Has(long row, long column) const { return row >= 0 && row < rows_ && column >= 0 && column < Columns(); }

    void SetRows(long rows);
    void InsertRow(long before); ///< 0 to Rows()
    void DeleteRow(long row);
    void Reorder(const std::vector<std::uint32_t> &order); ///< each row's present number, in the new order

    SpreadKind Kind(int column) const { return At(column).kind; }
    bool IsEmpty(long row, int column) const;
    long Number(long row, int column) const;   ///< 0 when empty
    double Amount(long row, int column) const; ///< 0 when empty
    /// Holds until the next change of a text.
    std::string_view Text(long row, int column) const;
    /// Equal for equal texts, below TextCount(); 0 is the empty one. Holds as long as Text.
    std::uint32_t TextId(long row, int column) const { return At(column).texts[static_cast<std::size_t>(row)]; }
    std::size_t TextCount() const { return pool_.Count(); }

    /// @throws std::out_of_range for a number beyond 32 bits, and the cell stays as it is
    void SetNumber(long row, int column, long number);
    /// No number (NaN) empties the cell. @throws std::out_of_range as ToCents does, and the cell stays as it is
    void SetAmount(long row, int column, double amount);
    void SetText(long row, int column, std::string_view text);
    void ClearCell(long row, int column);

    SpreadValue Value(long row, int column) const;
    void SetValue(long row, int column, const SpreadValue &value); ///< of the column's kind

    /// Kept up to date with every change of an amount.
    long long SumCents(int column) const { return At(column).sum_cents; }

    void LockColumn(int column, bool locked) { At(column).locked = locked; }
    void LockCell(long row, int column, bool locked); ///< wins over the column's, whatever that becomes
    bool IsLocked(long row, int column) const;
    /// True when a cell of the grid can be typed into; in a grid without rows, when one of a new row could.
    bool HasUnlocked() const;

    long RowData(long row) const { return data_.empty() ? 0 : data_[static_cast<std::size_t>(row)]; }
    void SetRowData(long row, long data);
    unsigned RowColor(long row) const { return colors_.empty() ? 0 : colors_[static_cast<std::size_t>(row)]; }
    void SetRowColor(long row, unsigned color); ///< a number of the caller's choice, 0 = the default colour

  private:
    enum class Lock : std::uint8_t { AsColumn, Locked, Unlocked };

    struct ColumnCells {
        SpreadKind kind = SpreadKind::Text;
        bool locked = false;
        std::vector<std::int32_t> numbers;
        std::vector<double> amounts;
        std::vector<std::uint32_t> texts;
        std::vector<Lock> locks; ///< empty while no cell differs from the column
        long locked_cells = 0, unlocked_cells = 0;
        long long sum_cents = 0;
    };

    ColumnCells &At(int column) { return columns_[static_cast<std::size_t>(column)]; }
    const ColumnCells &At(int column) const { return columns_[static_cast<std::size_t>(column)]; }
    void Forget(long first_row); ///< takes the rows from here on out of sums and counts
    void SetLock(long row, ColumnCells &cells, Lock lock);
    void PutText(std::uint32_t &cell, std::uint32_t id);
    void DropUnusedTexts();

    std::vector<ColumnCells> columns_;
    std::vector<long> data_;
    std::vector<std::uint8_t> colors_;
    TextPool pool_;
    std::size_t text_cells_ = 0; ///< that are not empty
    std::size_t kept_texts_ = 0; ///< count of texts when unused ones were last looked for
    long rows_ = 0;
};
