#include "tarvodlg/print/XlsxParts.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace {

constexpr std::size_t kCellUnitsMax = 32'767; ///< UTF-16 units, as spreadsheets count
constexpr std::size_t kSheetNameMax = 31;
/// A spreadsheet's numbers have fifteen digits; a longer one stays whole as a text.
constexpr long long kWholeMax = 999'999'999'999'999;
/// Day 0 of the dates of spreadsheets. They take 1900 for a leap year, so it is right from 1 March 1900 on only.
const long kDayZero = DateToJulian(30, 12, 1899);
const long kFirstDay = DateToJulian(1, 3, 1900);

/// Numbers of the cell styles, in the order of cellXfs below.
enum Style { kPlain, kTitle, kAmount, kDate, kCode, kWords };

constexpr const char *kXml = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

constexpr const char *kStyles = R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">
<numFmts count="1"><numFmt numFmtId="164" formatCode="dd/mm/yyyy"/></numFmts>
<fonts count="2"><font><sz val="11"/><name val="Calibri"/></font><font><b/><sz val="11"/><name val="Calibri"/></font></fonts>
<fills count="2"><fill><patternFill patternType="none"/></fill><fill><patternFill patternType="gray125"/></fill></fills>
<borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>
<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>
<cellXfs count="6">
<xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/>
<xf numFmtId="0" fontId="1" fillId="0" borderId="0" xfId="0" applyFont="1"/>
<xf numFmtId="4" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>
<xf numFmtId="164" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>
<xf numFmtId="1" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>
<xf numFmtId="49" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>
</cellXfs>
<cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/></cellStyles>
</styleSheet>
)";

constexpr const char *kPackage = R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>
</Relationships>
)";

constexpr const char kLink[] = R"(<Relationship Id="rId{}" )"
                               R"(Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/{}" )"
                               R"(Target="{}"/>)";

constexpr const char kSheetType[] =
    R"(<Override PartName="/{}" )"
    R"(ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>)";

constexpr const char *kTypesBegin =
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
    R"(<Default Extension="xml" ContentType="application/xml"/>)"
    R"(<Override PartName="/xl/workbook.xml" )"
    R"(ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>)"
    R"(<Override PartName="/xl/styles.xml" )"
    R"(ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml"/>)";

constexpr const char *kWorkbookBegin =
    R"(<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" )"
    R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"><sheets>)";

constexpr const char *kLinksBegin =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)";

bool IsXmlCharacter(char32_t c)
{
    return c == '\t' || c == '\n' || (c >= 0x20 && c != 0x7F && c != 0xFFFE && c != 0xFFFF);
}

/// "_x000D_" in a cell is read as the character with that number.
bool IsSpreadsheetEscape(std::string_view text)
{
    return text.size() >= 7 && text.starts_with("_x") && text[6] == '_' &&
           text.substr(2, 4).find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

void AppendText(std::string &out, std::string_view place, std::string_view text, Style style)
{
    fmt::format_to(std::back_inserter(out), R"(<c r="{}" s="{}" t="inlineStr"><is><t xml:space="preserve">)", place,
                   static_cast<int>(style));
    AppendXmlText(out, text);
    out += "</t></is></c>";
}

template <class Number>
void AppendNumber(std::string &out, std::string_view place, Number number, Style style)
{
    fmt::format_to(std::back_inserter(out), R"(<c r="{}" s="{}"><v>{}</v></c>)", place, static_cast<int>(style),
                   number);
}

/// @param number  finite   @return the characters that it shows, thousands points included
std::size_t AppendDouble(std::string &out, std::string_view place, double number, ColumnFormat format)
{
    if (format == ColumnFormat::Amount) {
        number = Round(number, 2);
        AppendNumber(out, place, number, kAmount);
        const double digits = 1 + std::floor(std::log10(std::max(1.0, std::fabs(number))));
        return static_cast<std::size_t>(digits + std::floor((digits - 1) / 3) + 3 + (number < 0 ? 1 : 0));
    }
    // A code with decimals would be shown as another code.
    const bool is_whole = number == std::trunc(number);
    AppendNumber(out, place, number, format == ColumnFormat::Code && is_whole ? kCode : kPlain);
    return fmt::formatted_size("{}", number);
}

std::size_t AppendWhole(std::string &out, std::string_view place, long long number, ColumnFormat format)
{
    if (number > kWholeMax || number < -kWholeMax) {
        const std::string digits = fmt::format("{}", number);
        AppendText(out, place, digits, kWords);
        return digits.size();
    }
    if (format == ColumnFormat::Amount) return AppendDouble(out, place, static_cast<double>(number), format);
    AppendNumber(out, place, number, format == ColumnFormat::Code ? kCode : kPlain);
    return fmt::formatted_size("{}", number);
}

std::size_t AppendDate(std::string &out, std::string_view place, long day)
{
    if (day >= kFirstDay)
        AppendNumber(out, place, day - kDayZero, kDate);
    else
        AppendText(out, place, FormatDate(day), kWords);
    return 10;
}

} // namespace

void AppendXmlText(std::string &out, std::string_view text)
{
    std::string valid;
    if (!IsValidUtf8(text)) text = valid = ToValidUtf8(text);
    std::size_t units = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = at;
        char32_t character = DecodeUtf8(text, &at);
        if (character == '\r') { // a reader of XML would make a line end of it as well
            if (at < text.size() && text[at] == '\n') continue;
            character = '\n';
        }
        if (!IsXmlCharacter(character)) continue;
        units += character > 0xFFFF ? 2 : 1;
        if (units > kCellUnitsMax) return;
        if (character == '&')
            out += "&amp;";
        else if (character == '<')
            out += "&lt;";
        else if (character == '>')
            out += "&gt;";
        else if (character == '"')
            out += "&quot;";
        else if (character == '_' && IsSpreadsheetEscape(text.substr(begin)))
            out += "_x005F_";
        else
            AppendUtf8(out, character);
    }
}

std::size_t AppendCell(std::string &out, std::string_view place, const ReportValue &value, ColumnFormat format)
{
    if (const auto *whole = std::get_if<long long>(&value)) return AppendWhole(out, place, *whole, format);
    if (const auto *number = std::get_if<double>(&value))
        return std::isfinite(*number) ? AppendDouble(out, place, *number, format) : 0;
    if (const auto *date = std::get_if<ReportDate>(&value))
        return date->day == 0 ? 0 : AppendDate(out, place, date->day);
    const auto *text = std::get_if<std::string>(&value);
    if (text == nullptr || text->empty()) return 0;
    AppendText(out, place, *text, kWords);
    return Utf8Length(*text);
}

void AppendTitleCell(std::string &out, std::string_view place, std::string_view title)
{
    AppendText(out, place, title, kTitle);
}

std::string ColumnLetters(std::size_t column)
{
    std::string letters;
    for (std::size_t rest = column + 1; rest > 0; rest = (rest - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
    return letters;
}

std::string SheetName(std::string_view title, std::size_t number)
{
    std::string name = OnOneLine(title);
    for (char &c : name)
        if (std::string_view(":\\/?*[]'").find(c) != std::string_view::npos) c = ' ';
    name = OnOneLine(name);
    if (name.empty()) name = "Foglio";
    const std::string behind = number > 1 ? fmt::format(" ({})", number) : "";
    return std::string(Trimmed(Utf8Prefix(name, kSheetNameMax - behind.size()))) + behind;
}

std::string SheetPath(std::size_t number)
{
    return fmt::format("xl/worksheets/sheet{}.xml", number);
}

std::vector<std::pair<std::string, std::string>> WorkbookParts(std::string_view title, std::size_t sheets)
{
    std::string types, names, links;
    for (std::size_t number = 1; number <= sheets; ++number) {
        types += fmt::format(kSheetType, SheetPath(number));
        names += "<sheet name=\"";
        AppendXmlText(names, SheetName(title, number));
        names += fmt::format(R"(" sheetId="{0}" r:id="rId{0}"/>)", number);
        links += fmt::format(kLink, number, "worksheet", fmt::format("worksheets/sheet{}.xml", number));
    }
    links += fmt::format(kLink, sheets + 1, "styles", "styles.xml");
    const auto whole = [](auto... pieces) {
        std::string text = kXml;
        (text.append(pieces), ...);
        return text;
    };
    return {{"[Content_Types].xml", whole(kTypesBegin, types, "</Types>\n")}, // readers expect it first
            {"_rels/.rels", whole(kPackage)},
            {"xl/workbook.xml", whole(kWorkbookBegin, names, "</sheets></workbook>\n")},
            {"xl/_rels/workbook.xml.rels", whole(kLinksBegin, links, "</Relationships>\n")},
            {"xl/styles.xml", whole(kStyles)}};
}
