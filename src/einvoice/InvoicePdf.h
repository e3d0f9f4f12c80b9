#pragma once

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

/// Writes an invoice as people read it, on A4 pages. Works without a screen; memory does not grow with the lines.
/// @param document  one document of the file; nothing = all of them, one after the other
/// @return pages written
/// @throws FileError, ReportError; then what stood under the name stands there still
long WriteInvoicePdf(const CFattureElettronicheDB &content, std::optional<std::size_t> document,
                     const std::filesystem::path &file);

/// The same as bytes, by way of the company's tmp folder. @throws FileError, ReportError
std::string RenderInvoicePdf(const CFattureElettronicheDB &content, std::optional<std::size_t> document = {});
