#pragma once

#include "tarvodlg/print/ReportValue.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// How the numbers of a column show in a spreadsheet.
enum class ColumnFormat { Text, Code, Amount, Date };

struct RowColumn {
    std::string title;
    ColumnFormat format = ColumnFormat::Text;
};

/// Writes rows to a file as they come; memory does not grow with their number. Nothing stands under the file's name
/// until Finish: a failure or a destruction before it leaves what was there. @throws FileError
class RowWriter {
  public:
    virtual ~RowWriter() = default;
    /// @param values  one for each column. An amount is rounded to cents; a value that is not of its column's kind is
    ///                written as what it is.
    virtual void Add(std::span<const ReportValue> values) = 0;
    virtual void Finish() = 0;
};

/// CSV for spreadsheet programs: semicolons, decimal comma, dates 31/12/2026, lines ended by CR LF, UTF-8 with its mark
/// at the beginning. A text that a spreadsheet would take for a formula gets an apostrophe before it.
std::unique_ptr<RowWriter> OpenCsv(const std::filesystem::path &file, std::vector<RowColumn> columns);

/// CSV for programs: commas, decimal point, ISO dates, lines ended by LF, UTF-8 without a mark, texts as they are.
std::unique_ptr<RowWriter> OpenMachineCsv(const std::filesystem::path &file, std::vector<RowColumn> columns);

/// XLSX with true numbers and dates, title row frozen and bold, one sheet (rows past 1,048,575 go on in further
/// sheets). What XML cannot carry is dropped from texts, and what a cell has no room for (32,767 characters).
/// @param sheet  its name, cut to what a spreadsheet admits
std::unique_ptr<RowWriter> OpenXlsx(const std::filesystem::path &file, const std::string &sheet,
                                    std::vector<RowColumn> columns);

/// By the extension: .xlsx, .csv. @throws FileError for another one
std::unique_ptr<RowWriter> OpenRows(const std::filesystem::path &file, const std::string &title,
                                    std::vector<RowColumn> columns);
