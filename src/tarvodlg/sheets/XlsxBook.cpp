#include "tarvodlg/base/Dates.h"
#include "tarvodlg/sheets/NumberFormats.h"
#include "tarvodlg/sheets/SheetBook.h"
#include "tarvodlg/sheets/XlsxPackage.h"

#include <charconv>
#include <cmath>
#include <fmt/format.h>

namespace {

constexpr long kColumnMax = 16384, kRowMax = 1'048'576;

/// The texts of an element: of itself or of its runs, without what only says how it is spoken.
std::string TextOf(const pugi::xml_node &element)
{
    std::string text;
    for (const pugi::xml_node &child : element) {
        if (LocalName(child) == "t")
            text += child.text().get();
        else if (LocalName(child) == "r")
            text += Child(child, "t").text().get();
    }
    return text;
}

template <class Number>
std::optional<Number> Parse(std::string_view text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Row and column of "BC12", each 0 where it is missing.
struct Place {
    long row = 0, column = 0;
};

std::optional<Place> ParsePlace(std::string_view text)
{
    Place place;
    std::size_t at = 0;
    for (; at < text.size() && text[at] >= 'A' && text[at] <= 'Z'; ++at) {
        place.column = place.column * 26 + (text[at] - 'A' + 1);
        if (place.column > kColumnMax) return std::nullopt;
    }
    if (at < text.size()) {
        const std::optional<long> row = Parse<long>(text.substr(at));
        if (!row || *row < 1 || *row > kRowMax) return std::nullopt;
        place.row = *row;
    }
    return place;
}

/// A workbook of Excel 2007 and later.
class XlsxBook : public SheetBook {
  public:
    explicit XlsxBook(std::string bytes) : package_(std::move(bytes)) { ReadWorkbook(); }

    void ForEachRow(const SheetRowFunction &each) override;

  private:
    std::string FindWorkbook() const;
    void ReadWorkbook();
    void ReadStyles();
    void ReadStrings();
    SheetCell ReadCell(const pugi::xml_node &cell, const Place &place) const;

    XlsxPackage package_;
    std::string sheet_, styles_, shared_strings_; ///< parts; empty = none
    NumberFormats formats_;
    std::vector<unsigned> cell_formats_;
    std::vector<std::string> strings_;
};

/// Another kind of file that comes as an archive too is named, so that the user knows what to do.
std::string XlsxBook::FindWorkbook() const
{
    for (const auto &[name, link] : package_.LinksOf(""))
        if (link.type == "officeDocument" && !link.is_external && link.target.ends_with(".xml")) return link.target;
    if (package_.Has("xl/workbook.bin"))
        throw SheetError("Il foglio è nel formato binario .xlsb: salvarlo come .xlsx.");
    if (const auto type = package_.Has("mimetype") ? package_.Read("mimetype") : std::nullopt;
        type && type->find("opendocument") != std::string::npos)
        throw SheetError("Il file è un documento OpenDocument: salvarlo come .xlsx.");
    throw SheetError("Il file è un archivio compresso, ma non un foglio Excel.");
}

void XlsxBook::ReadWorkbook()
{
    const std::string workbook_part = FindWorkbook();
    const auto document = package_.ReadXml(workbook_part);
    const pugi::xml_node workbook = document->document_element();
    if (LocalName(workbook) != "workbook") throw SheetError("Il file è di un programma d'ufficio, ma non è un foglio.");
    const std::string_view base = AttributeOf(Child(workbook, "workbookPr"), "date1904").value();
    if (base == "1" || base == "true") formats_.base = DateBase::From1904;

    const std::map<std::string, PartLink> links = package_.LinksOf(workbook_part);
    for (const auto &[name, link] : links) {
        if (link.is_external) continue;
        if (link.type == "styles") styles_ = link.target;
        if (link.type == "sharedStrings") shared_strings_ = link.target;
    }
    // The first one that is seen; where all are hidden, the first one.
    bool found_visible = false;
    for (const pugi::xml_node &sheet : Child(workbook, "sheets")) {
        const auto link = links.find(AttributeOf(sheet, "id").value());
        if (link == links.end() || link->second.is_external || link->second.type != "worksheet") continue;
        const std::string_view state = AttributeOf(sheet, "state").value();
        const bool is_visible = state.empty() || state == "visible";
        if (found_visible || (!sheet_.empty() && !is_visible)) continue;
        sheet_ = link->second.target;
        found_visible = is_visible;
    }
    if (sheet_.empty()) throw SheetError(kNoWorksheet);
}

void XlsxBook::ReadStyles()
{
    if (styles_.empty() || !cell_formats_.empty()) return;
    const auto document = package_.ReadXml(styles_);
    const pugi::xml_node root = document->document_element();
    for (const pugi::xml_node &format : Child(root, "numFmts"))
        formats_.Define(AttributeOf(format, "numFmtId").as_uint(), AttributeOf(format, "formatCode").value());
    for (const pugi::xml_node &format : Child(root, "cellXfs"))
        cell_formats_.push_back(AttributeOf(format, "numFmtId").as_uint());
}

void XlsxBook::ReadStrings()
{
    if (shared_strings_.empty() || !strings_.empty()) return;
    const auto document = package_.ReadXml(shared_strings_);
    for (const pugi::xml_node &item : document->document_element())
        if (LocalName(item) == "si") strings_.push_back(CutToCell(TextOf(item)));
}

SheetCell XlsxBook::ReadCell(const pugi::xml_node &cell, const Place &place) const
{
    const auto fail = [&](const char *what) {
        return SheetError(fmt::format("Riga {}, colonna {}: {}", place.row, place.column, what));
    };
    const std::string_view type = AttributeOf(cell, "t").value();
    if (type == "inlineStr") return TextCell(TextOf(Child(cell, "is")));
    const pugi::xml_node value_node = Child(cell, "v");
    const std::string_view value = value_node.text().get();
    if (type == "str" || type == "e") return TextCell(std::string(value));
    if (value.empty()) return TextCell(Child(cell, "f") ? "(formula senza valore)" : "");
    if (type == "b") return TruthCell(value != "0" && value != "false");
    if (type == "s") {
        const std::optional<std::size_t> index = Parse<std::size_t>(value);
        if (!index || *index >= strings_.size()) throw fail("il testo della cella manca nel file.");
        return TextCell(strings_[*index]);
    }
    if (type == "d") { // "2025-12-31T00:00:00"
        const std::optional<long> day = ParseDate(value.substr(0, 10));
        if (!day) throw fail("la data della cella non è valida.");
        const long serial = *day - DayOfSerial(61, DateBase::From1900) + 61;
        return {SheetCell::Kind::Number, true, static_cast<double>(serial), *day, {}};
    }
    const std::optional<double> number = Parse<double>(value);
    if (!number || !std::isfinite(*number)) throw fail("il numero della cella non è valido.");
    const unsigned style = AttributeOf(cell, "s").as_uint();
    return formats_.Cell(*number, style < cell_formats_.size() ? cell_formats_[style] : 0);
}

void XlsxBook::ForEachRow(const SheetRowFunction &each)
{
    ReadStyles();
    ReadStrings();
    const auto document = package_.ReadXml(sheet_);
    const pugi::xml_node data = Child(document->document_element(), "sheetData");
    if (!data) throw SheetError(kSheetDamaged);
    RowAssembler rows(each);
    long row = 0;
    for (const pugi::xml_node &row_node : data) {
        if (LocalName(row_node) != "row") continue;
        const std::string_view row_name = AttributeOf(row_node, "r").value();
        const std::optional<Place> row_place = ParsePlace(row_name);
        if (!row_place || row_place->column != 0) throw SheetError(kSheetDamaged);
        row = row_place->row != 0 ? row_place->row : row + 1;
        long column = 0;
        for (const pugi::xml_node &cell : row_node) {
            if (LocalName(cell) != "c") continue;
            const std::optional<Place> place = ParsePlace(AttributeOf(cell, "r").value());
            if (!place || (place->row != 0 && place->row != row)) throw SheetError(kSheetDamaged);
            column = place->column != 0 ? place->column : column + 1; // its place may be left out
            rows.Put(row, column, ReadCell(cell, {row, column}));
        }
        rows.Finish();
    }
}

} // namespace

std::unique_ptr<SheetBook> OpenXlsxBook(std::string bytes)
{
    return std::make_unique<XlsxBook>(std::move(bytes));
}
