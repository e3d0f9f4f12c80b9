#pragma once

#include "tarvodlg/print/ReportValue.h"
#include "tarvodlg/print/RowWriter.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The texts that a spreadsheet file is made of.

/// Escaped for XML. What XML cannot carry is dropped, and what is past the 32,767 characters of a cell.
/// @param out  gets the text at its end
void AppendXmlText(std::string &out, std::string_view text);

/// One cell. @param place  "AB12"   @return the characters that it shows, about
std::size_t AppendCell(std::string &out, std::string_view place, const ReportValue &value, ColumnFormat format);
/// A bold one of the first row.
void AppendTitleCell(std::string &out, std::string_view place, std::string_view title);

/// "A" for 0, "Z" for 25, "AA" for 26.
std::string ColumnLetters(std::size_t column);

/// What a sheet may be called: at most 31 characters and none that formulas use. @param number  from 1; a further sheet
/// has its number behind the name
std::string SheetName(std::string_view title, std::size_t number);

/// Everything of the file but the sheets themselves: path in the archive, text.
/// @param title  of the sheets, as SheetName takes it
std::vector<std::pair<std::string, std::string>> WorkbookParts(std::string_view title, std::size_t sheets);
/// Where the sheet stands in the archive. @param number  from 1
std::string SheetPath(std::size_t number);
