#include "tests/tarvodlg/sheets/SheetText.h"

#include "tarvodlg/base/Dates.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <fmt/format.h>

namespace {

std::string Shown(const SheetCell &cell)
{
    switch (cell.kind) {
    case SheetCell::Kind::Empty:
        return {};
    case SheetCell::Kind::Text:
        return cell.text;
    case SheetCell::Kind::Number:
        break;
    }
    EXPECT_EQ(cell.text, "");
    EXPECT_EQ(cell.is_date, cell.day != 0);
    return cell.is_date ? FormatDate(cell.day) : fmt::format("{}", cell.number);
}

} // namespace

std::string ShownOrRefused(const std::filesystem::path &workbook)
{
    try {
        std::string text;
        SheetReader(workbook).ForEachRow([&](long row, const std::vector<SheetCell> &cells) {
            text += fmt::format("{}:", row);
            for (std::size_t i = 0; i < cells.size(); ++i) text += (i == 0 ? " " : " | ") + Shown(cells[i]);
            text += '\n';
        });
        return text;
    } catch (const SheetError &error) {
        return error.what();
    }
}

std::filesystem::path DataFile(const std::string &name)
{
    return std::filesystem::path(LUMERA_SOURCE_DIR "/tests/tarvodlg/sheets/data") / name;
}

void WriteZip(const std::filesystem::path &file, const std::map<std::string, std::string> &parts)
{
    int error = 0;
    zip_t *archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr) << error;
    for (const auto &[path, content] : parts)
        zip_file_add(archive, path.c_str(), zip_source_buffer(archive, content.data(), content.size(), 0),
                     ZIP_FL_ENC_UTF_8);
    ASSERT_EQ(zip_close(archive), 0) << zip_strerror(archive);
}
