#pragma once

#include "tarvodlg/print/ReportLayout.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

using ReportValues = std::map<std::string, ReportValue>; ///< parameters by name

/// One row of a report's query, kept as the texts that the engine gave: a group's footer still needs the row before.
class ReportRow {
  public:
    void Resize(std::size_t columns) { cells_.resize(columns); }
    void Set(std::size_t column, bool is_null, std::string_view text);

    bool IsNull(std::size_t column) const { return cells_[column].is_null; }
    const std::string &Text(std::size_t column) const { return cells_[column].text; }
    /// 0 for NULL and for what is no number.
    double Number(std::size_t column) const;
    long Day(std::size_t column) const; ///< day number, 0 for NULL and for what is no date
    /// Number, date or text by the looks of it: "0" is a number, "007" a text.
    ReportValue Value(std::size_t column) const;
    bool SameIn(std::size_t column, const ReportRow &other) const;

  private:
    struct Cell {
        bool is_null = true;
        std::string text;
    };
    std::vector<Cell> cells_;
};

/// The names of the columns of a query, lower case.
class ReportColumns {
  public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    void Assign(std::vector<std::string> names);
    std::size_t Count() const { return names_.size(); }
    std::size_t Find(std::string_view name) const; ///< kNone when missing
    /// @throws ReportError "pnotagest.rpt, riga 12, colonna 5: ..."
    std::size_t Require(const ReportLayout &layout, LayoutPlace place, std::string_view name) const;

  private:
    std::vector<std::string> names_;
    mutable std::size_t last_ = 0; ///< items name columns mostly in order
};

// A format is "0", "0,00" and the like, with a "z" behind it when zero prints empty; "code" has no thousands points;
// "date". Without one a text stays as it is.
bool IsNumberFormat(std::string_view format); ///< "code" too
std::string FormatNumber(double number, std::string_view format);
std::string FormatCell(const ReportRow &row, std::size_t column, std::string_view format);
/// Numbers without a format show as they are, amounts with two decimals, dates as dates.
std::string FormatValue(const ReportValue &value, std::string_view format);

/// What a formula in a layout may ask for beside the columns of its row.
struct PagePlace {
    long page_index = 1; ///< pages of this print, from 1: {row.report_page}
    bool at_end = false; ///< the last page: {row.report_end} is 1

    /// True for the names of the two, which no query has to give.
    static bool Has(std::string_view name) { return name == "report_page" || name == "report_end"; }
};

/// Looks up the columns that a when= asks for: a misspelt one would be NULL in every row, and what depends on it never
/// be printed. @throws ReportError
void RequireColumns(const SelectionFormula &when, const ReportColumns &columns, const ReportLayout &layout,
                    LayoutPlace place);

/// Whether a when= holds. @param row  null when there is none: every column is NULL
bool Holds(const SelectionFormula &when, const ReportColumns &columns, const ReportRow *row,
           const ReportValues &parameters, const PagePlace &place);
