#pragma once

#include "tarvodlg/base/Files.h"
#include "tarvodlg/sheets/Sheet.h"

#include <zip.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

/// What an input of the sheet reader begins with when it holds the parts of an .xlsx one after the other, each ended by
/// the record separator. A byte changed in a packed workbook only breaks a checksum; changed here it reaches the
/// reader.
inline constexpr std::string_view kSheetPartsMark = "PARTS\x1E";

/// Packs such parts into a workbook. Parts that are missing are left out of it.
inline std::string PackSheetParts(std::string_view parts)
{
    constexpr std::array names = {"xl/workbook.xml", "xl/_rels/workbook.xml.rels", "xl/styles.xml",
                                  "xl/sharedStrings.xml", "xl/worksheets/sheet1.xml"};
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t *archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const char *name : names) {
        const std::size_t end = parts.find('\x1E');
        const std::string_view part = parts.substr(0, end);
        const zip_int64_t index =
            zip_file_add(archive, name, zip_source_buffer(archive, part.data(), part.size(), 0), ZIP_FL_OVERWRITE);
        if (index >= 0) zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
        if (end == std::string_view::npos) break;
        parts.remove_prefix(end + 1);
    }
    zip_close(archive);
    zip_stat_t status;
    zip_source_stat(target, &status);
    std::string bytes(status.size, '\0');
    zip_source_open(target);
    zip_source_read(target, bytes.data(), bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    zip_error_fini(&error);
    return bytes;
}

/// Reads a workbook to its end. @return true when it could be read
/// @throws whatever the reader must not throw, std::logic_error when its rows are not what it promises
inline bool ReadSheetFile(const std::filesystem::path &file)
{
    try {
        SheetReader reader(file);
        long last_row = 0;
        reader.ForEachRow([&](long row, const std::vector<SheetCell> &cells) {
            if (row < 1 || cells.empty()) throw std::logic_error("a row without number or cells");
            last_row = row;
            for (const SheetCell &cell : cells) {
                if (cell.kind == SheetCell::Kind::Number && !std::isfinite(cell.number))
                    throw std::logic_error("a cell that is no number");
                if (cell.kind != SheetCell::Kind::Text && !cell.text.empty())
                    throw std::logic_error("a text in a cell without text");
            }
        });
        return last_row > 0;
    } catch (const SheetError &error) {
        if (std::string_view(error.what()).empty()) throw std::logic_error("a refusal without a reason");
        return false;
    }
}

/// The bytes of the workbook that an input stands for.
inline std::string SheetBytes(std::string_view input)
{
    return input.starts_with(kSheetPartsMark) ? PackSheetParts(input.substr(kSheetPartsMark.size()))
                                              : std::string(input);
}
