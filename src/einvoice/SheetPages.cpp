#include "einvoice/SheetPages.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/BandComposer.h"
#include "tarvodlg/print/Interruption.h"

#include <algorithm>

namespace {

// All in millimetres.
constexpr double kMargin = 12, kTop = 10, kBottom = 10, kFootHeight = 9;
constexpr double kCellGap = 1.6;     ///< between the words of neighbouring columns
constexpr double kNumberGap = 2.8;   ///< behind a number, which ends where the words of the next column begin
constexpr double kRowGap = 0.7;      ///< below a row
constexpr double kSectionGap = 3.2;  ///< above a section
constexpr double kBoxPadding = 1.6;  ///< between a box and its words
constexpr double kKeptHeight = 70.0; ///< a row up to this height is not divided between two pages

constexpr double kSize = 7.5, kNoteSize = 6.5, kTotalSize = 10, kTitleSize = 9, kHeadingSize = 13;
constexpr const char *kFont = "DejaVu Sans";
constexpr const char *kGrey = "#505050";
constexpr std::size_t kWordMax = 200; ///< letters: longer ones are no words, and measuring them would take forever

TextStyle Style(double size, bool bold = false, const char *color = "")
{
    return {kFont, size, bold, false, color, false};
}

TextStyle StyleOf(SheetTone tone)
{
    switch (tone) {
    case SheetTone::Strong:
        return Style(kSize, true);
    case SheetTone::Note:
        return Style(kNoteSize, false, kGrey);
    case SheetTone::Total:
        return Style(kTotalSize, true);
    case SheetTone::Plain:
        break;
    }
    return Style(kSize);
}

double LineHeightOf(const SheetCell &cell)
{
    const bool is_large =
        std::any_of(cell.begin(), cell.end(), [](const SheetText &text) { return text.tone == SheetTone::Total; });
    return LineHeight(is_large ? kTotalSize : kSize);
}

/// How much lower smaller letters stand, so that all of a line have one base line.
double ToBaseline(const TextStyle &style, double line_height)
{
    constexpr double kAscent = 0.93 * 25.4 / 72; // of the font, mm for a point
    return (line_height / LineHeight(1) - style.size) * kAscent;
}

void AppendParted(std::string *text, std::string_view line)
{
    std::size_t letters = 0;
    for (std::size_t position = 0; position < line.size();) {
        const std::size_t begin = position;
        DecodeUtf8(line, &position);
        letters = line[begin] == ' ' ? 0 : letters + 1;
        if (letters > kWordMax) {
            text->push_back('\n');
            letters = 1;
        }
        text->append(line.substr(begin, position - begin));
    }
}

/// The lines that the text has by itself, each without what would steer the direction of reading: a name must not be
/// able to turn an amount around.
std::string Printable(std::string_view text)
{
    std::string printable;
    while (true) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string line = OnOneLine(text.substr(0, end));
        if (!line.empty() && !printable.empty()) printable.push_back('\n');
        AppendParted(&printable, line);
        if (end == text.size()) return printable;
        text.remove_prefix(end + 1);
    }
}

double Bottom()
{
    return SheetPaper().height - kBottom - kFootHeight;
}

double Width()
{
    return SheetPaper().width - 2 * kMargin;
}

std::vector<double> WidthsOf(const SheetSection &section)
{
    std::vector<double> widths;
    double fixed = 0;
    for (const SheetColumn &column : section.columns) fixed += column.width;
    for (const SheetColumn &column : section.columns)
        widths.push_back(column.width > 0 ? column.width : Width() - fixed);
    return widths;
}

} // namespace

PaperSize SheetPaper()
{
    return PaperSizeOf("A4", false);
}

void SheetPages::Add(const InvoiceSheet &sheet)
{
    sheet_ = &sheet;
    BeginPage();
    PutHeading();
    for (const SheetSection &section : sheet.sections)
        if (section.count > 0) PutSection(section);
    EndPage(false);
}

void SheetPages::BeginPage()
{
    pages_.BeginPage(++page_);
    y_ = kTop;
}

void SheetPages::EndPage(bool goes_on)
{
    const TextStyle style = Style(kNoteSize, false, kGrey);
    constexpr double kPageWidth = 40;
    const double y = Bottom() + 3, right = kMargin + Width() - kPageWidth;
    pages_.Line(kMargin, y - 0.8, kMargin + Width(), y - 0.8);
    pages_.Text(kMargin, y, Width() - kPageWidth - kCellGap, ItemAlign::Left, style, OnOneLine(sheet_->foot));
    pages_.Text(right, y, kPageWidth, ItemAlign::Right, Style(kNoteSize, goes_on),
                "Pagina " + std::to_string(page_) + (goes_on ? " - segue" : ""));
    pages_.EndPage();
}

void SheetPages::NextPage()
{
    EndPage(true);
    BeginPage();
    const std::string words = sheet_->heading + "  " + sheet_->number + "  -  " + sheet_->seller;
    pages_.Text(kMargin, y_, Width(), ItemAlign::Left, Style(kSize, true), OnOneLine(words));
    y_ += LineHeight(kSize) + 0.6;
    Rule();
    y_ += 1.2;
}

void SheetPages::Rule()
{
    pages_.Line(kMargin, y_, kMargin + Width(), y_);
}

void SheetPages::PutHeading()
{
    constexpr double kNumberWidth = 74;
    const TextStyle heading = Style(kHeadingSize, true), number = Style(kTotalSize, true);
    const double top = y_;
    for (const std::string &line : pages_.Wrapped(Width() - kNumberWidth - kCellGap, heading, sheet_->heading)) {
        pages_.Text(kMargin, y_, 0, ItemAlign::Left, heading, line);
        y_ += LineHeight(kHeadingSize);
    }
    double y = top + LineHeight(kHeadingSize) - LineHeight(kTotalSize);
    for (const std::string &line : pages_.Wrapped(kNumberWidth, number, Printable(sheet_->number))) {
        pages_.Text(kMargin + Width() - kNumberWidth, y, kNumberWidth, ItemAlign::Right, number, line);
        y += LineHeight(kTotalSize);
    }
    y_ = std::max(y_, y);
}

void SheetPages::PutSection(const SheetSection &section)
{
    widths_ = WidthsOf(section);
    titles_.clear();
    title_lines_ = 0;
    const TextStyle style = Style(kNoteSize, true, kGrey);
    for (std::size_t i = 0; i < section.columns.size() && section.frame == SheetFrame::Table; ++i) {
        std::vector<Line> &lines = titles_.emplace_back();
        for (std::string &line : pages_.Wrapped(widths_[i] - kCellGap, style, section.columns[i].title))
            lines.push_back({std::move(line), style});
        title_lines_ = std::max(title_lines_, lines.size());
    }
    const double kept = HeightToKeep(section);
    if (y_ + kSectionGap + TitlesHeight(section) + kept > Bottom())
        NextPage();
    else
        y_ += kSectionGap;
    PutTitles(section, false);
    for (std::size_t i = 0; i < section.count; ++i) {
        RequireNotInterrupted();
        PutRow(section, Measured(section, section.row(i)));
    }
    if (section.frame != SheetFrame::Table) return;
    y_ += 0.3;
    Rule();
}

// A short section is not divided, of a long one the first row stands below its titles.
double SheetPages::HeightToKeep(const SheetSection &section)
{
    constexpr std::size_t kShort = 12;
    double height = 0, first = 0;
    for (std::size_t i = 0; i < std::min(section.count, kShort); ++i) {
        const Row row = Measured(section, section.row(i));
        height += static_cast<double>(row.lines) * row.line_height + kRowGap;
        if (i == 0) first = std::min(height, kKeptHeight);
    }
    return section.count <= kShort && height <= kKeptHeight ? height : first;
}

double SheetPages::TitlesHeight(const SheetSection &section)
{
    const double title = section.title.empty() ? 0 : LineHeight(kTitleSize) + 0.6;
    return title + (title_lines_ == 0 ? 0 : static_cast<double>(title_lines_) * LineHeight(kNoteSize) + 2.2);
}

void SheetPages::PutTitles(const SheetSection &section, bool is_again)
{
    if (!section.title.empty()) {
        pages_.Text(kMargin, y_, 0, ItemAlign::Left, Style(kTitleSize, true),
                    section.title + (is_again ? " (segue)" : ""));
        y_ += LineHeight(kTitleSize) + 0.6;
    }
    if (title_lines_ == 0) return;
    Rule();
    y_ += 0.8;
    Row row{titles_, title_lines_, LineHeight(kNoteSize)};
    DrawLines(section, row, 0, title_lines_);
    y_ += 0.5;
    Rule();
    y_ += 0.9;
}

std::vector<SheetPages::Line> SheetPages::Lines(const SheetCell &cell, const SheetColumn &column, double width)
{
    std::vector<Line> lines;
    for (const SheetText &text : cell) {
        TextStyle style = StyleOf(text.tone);
        if (column.is_number) {
            style.shrinks = true;
            lines.push_back({text.text, style});
            continue;
        }
        for (std::string &line : pages_.Wrapped(width, style, Printable(text.text)))
            lines.push_back({std::move(line), style});
    }
    return lines;
}

SheetPages::Row SheetPages::Measured(const SheetSection &section, const SheetRow &row)
{
    const double margins = section.frame == SheetFrame::Boxes ? 2 * kBoxPadding : kCellGap;
    Row measured;
    for (std::size_t i = 0; i < section.columns.size(); ++i) {
        const SheetCell &cell = row.at(i);
        measured.cells.push_back(Lines(cell, section.columns[i], widths_[i] - margins));
        measured.lines = std::max(measured.lines, measured.cells.back().size());
        measured.line_height = std::max(measured.line_height, LineHeightOf(cell));
    }
    return measured;
}

void SheetPages::PutRow(const SheetSection &section, const Row &row)
{
    const double padding = section.frame == SheetFrame::Boxes ? 2 * kBoxPadding : 0;
    const double height = static_cast<double>(row.lines) * row.line_height + padding;
    const auto next_page = [&] {
        NextPage();
        PutTitles(section, true);
    };
    if (y_ + height > Bottom() && height <= kKeptHeight) next_page();
    for (std::size_t first = 0; first < row.lines;) {
        const double room = (Bottom() - y_ - padding) / row.line_height;
        const auto fitting = room < 1 ? std::size_t{0} : static_cast<std::size_t>(room + 1e-6);
        const std::size_t count = std::min(row.lines - first, fitting);
        if (count > 0) DrawLines(section, row, first, count);
        first += count;
        if (first < row.lines) next_page();
    }
    y_ += kRowGap;
}

void SheetPages::DrawLines(const SheetSection &section, const Row &row, std::size_t first, std::size_t count)
{
    const bool is_boxed = section.frame == SheetFrame::Boxes;
    const double inset = is_boxed ? kBoxPadding : 0;
    const double height = static_cast<double>(count) * row.line_height + 2 * inset;
    double x = kMargin;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        const SheetColumn &column = section.columns[i];
        if (is_boxed) pages_.Box(x, y_, widths_[i], height);
        const bool is_last = i + 1 == row.cells.size();
        const double gap = is_boxed ? 2 * kBoxPadding : !column.is_number ? kCellGap : is_last ? 0 : kNumberGap;
        const std::vector<Line> &lines = row.cells[i];
        for (std::size_t line = first; line < std::min(first + count, lines.size()); ++line)
            pages_.Text(x + inset,
                        y_ + inset + static_cast<double>(line - first) * row.line_height +
                            ToBaseline(lines[line].style, row.line_height),
                        widths_[i] - gap, column.is_number ? ItemAlign::Right : ItemAlign::Left, lines[line].style,
                        lines[line].text);
        x += widths_[i];
    }
    y_ += height;
}
