#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct TableColumn {
    enum class Align { Left, Right };

    std::string title;
    Align align = Align::Left;
    std::size_t max_width = 0; ///< characters; longer texts end in "…". 0 = no limit
};

/// A table for the terminal: titles, a rule, rows, and totals under a second rule. Widths count characters, and control
/// characters never get through, since the texts are other people's.
///
/// Widths follow the titles and the first rows. From then on rows are written as they come, so that a list of any
/// length takes little memory; a longer text in one of them pushes its line out instead of losing anything.
class Table {
  public:
    /// How many rows are kept back to measure the columns.
    static constexpr std::size_t kMeasuredRows = 500;

    /// @param colours  bold titles and totals; off where the text goes to a file or a pipe
    explicit Table(std::vector<TableColumn> columns, bool colours = false);

    /// Missing cells are blank; there must not be more than columns.
    void AddRow(std::vector<std::string> cells);

    /// The text that is ready, which is handed over only once; empty until the columns are measured.
    std::string Take();

    /// Ends the table, without totals when there are none. @return what was not taken before
    std::string Finish(std::vector<std::string> totals = {});

  private:
    enum class Weight { Plain, Bold };

    std::vector<std::string> Clean(std::vector<std::string> cells) const;
    void Measure(const std::vector<std::string> &cells);
    void WriteMeasured();
    void WriteRow(const std::vector<std::string> &cells, Weight weight);
    void WriteRule();

    std::vector<TableColumn> columns_;
    std::vector<std::size_t> widths_;
    bool colours_;
    bool measuring_ = true;
    std::vector<std::vector<std::string>> kept_;
    std::string text_;
};
