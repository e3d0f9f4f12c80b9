#pragma once

#include "tarvodlg/print/Crystal.h"

/// Prints pages of text in fixed columns, the way registers were printed on continuous paper: to the printer, as PDF,
/// or to a text file with form feeds.
///
///     CPrinter print;
///     print.Open("Registro Acquisti", 132, 66, {ReportTarget::Text, file});
///     print.Print(1, 10, "DATA");           line and column from 1
///     print.NewPage();
///     print.Close();
class CPrinter {
  public:
    CPrinter();
    ~CPrinter(); ///< without Close nothing is left of the job

    /// @param columns, lines  of a page; the size of the letters follows from them
    void Open(const std::string &title, int columns, int lines, ReportDestination destination);
    /// Writes at line and column (from 1) of the current page; what does not fit is cut.
    void Print(int line, int column, std::string_view text);
    /// The same, ending at the column.
    void PrintRight(int line, int column, std::string_view text);
    void NewPage();
    long Pages() const; ///< begun so far
    /// @throws FileError
    void Close();

  private:
    struct State;
    std::unique_ptr<State> state_;
};
