#pragma once

#include "tarvodlg/sheets/Sheet.h"

#include <filesystem>
#include <map>
#include <string>

/// A workbook as text, a line for each row: "2: 31/12/2025 | 1234.5 |  | VERO"; instead of it why it cannot be read.
std::string ShownOrRefused(const std::filesystem::path &workbook);

/// A workbook beside this file that another program wrote.
std::filesystem::path DataFile(const std::string &name);

/// Writes an archive of these parts by their paths.
void WriteZip(const std::filesystem::path &file, const std::map<std::string, std::string> &parts);
