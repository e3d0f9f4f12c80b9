#include "tarvodlg/sheets/Sheet.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/sheets/CompoundFile.h"
#include "tarvodlg/sheets/SheetBook.h"

struct SheetReader::Book {
    std::unique_ptr<SheetBook> content;
};

namespace {

/// Workbooks before Excel 5 begin with their first record and have no container.
bool IsAncientWorkbook(std::string_view bytes)
{
    return bytes.size() > 4 && bytes[0] == '\x09' && (bytes[1] == '\0' || bytes[1] == '\x02' || bytes[1] == '\x04') &&
           bytes[3] == '\0';
}

/// What other programs call a workbook, for the user who got one.
std::string WhatElse(std::string_view bytes)
{
    if (bytes.empty()) return "Il file è vuoto.";
    if (IsAncientWorkbook(bytes))
        return "Il foglio è di una versione di Excel anteriore alla 5: salvarlo nel formato attuale.";
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    bytes = Trimmed(bytes);
    if (bytes.starts_with('<'))
        return "Il file è una pagina web o un XML con il nome di un foglio: aprirlo con il programma di calcolo e "
               "salvarlo come .xlsx.";
    if (bytes.substr(0, 1000).find('\0') == std::string_view::npos)
        return "Il file è un testo, per esempio un CSV: aprirlo con il programma di calcolo e salvarlo come .xlsx.";
    return "Il file non è un foglio Excel.";
}

std::unique_ptr<SheetBook> OpenBook(const std::filesystem::path &file)
{
    std::string bytes;
    try {
        bytes = ReadWholeFile(file, kSheetFileBytesMax);
    } catch (const FileError &error) {
        throw SheetError(error.what());
    }
    if (CompoundFile::IsOne(bytes)) return OpenBiffBook(bytes);
    if (bytes.starts_with("PK\x03\x04")) return OpenXlsxBook(std::move(bytes));
    throw SheetError(WhatElse(bytes));
}

} // namespace

SheetReader::SheetReader(const std::filesystem::path &file) : book_(std::make_unique<Book>())
{
    book_->content = OpenBook(file);
}

SheetReader::~SheetReader() = default;

void SheetReader::ForEachRow(const std::function<void(long row, const std::vector<SheetCell> &cells)> &each)
{
    book_->content->ForEachRow(each);
}
