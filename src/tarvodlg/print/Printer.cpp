#include "tarvodlg/print/Printer.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/PdfFile.h"
#include "tarvodlg/print/TemporaryPdf.h"

#include <stdexcept>

#include <fmt/format.h>

namespace {

constexpr const char *kFont = "DejaVu Sans Mono";
constexpr double kAdvance = 0.6021; ///< width of its letters, in parts of their size
constexpr double kLineSpacing = 1.2;
constexpr double kMargin = 10;       ///< mm
constexpr int kUprightColumns = 100; ///< more columns lie across
constexpr double kPointsPerMillimetre = 72 / 25.4;

/// Takes the pages as they are finished.
class TextPages {
  public:
    virtual ~TextPages() = default;
    virtual void Add(const std::vector<std::u32string> &lines) = 0;
    virtual void Finish() = 0;
};

std::string Utf8(std::u32string_view line)
{
    std::string text;
    for (const char32_t character : line) AppendUtf8(text, character);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

class FormFeedPages : public TextPages {
  public:
    explicit FormFeedPages(const std::filesystem::path &file) : file_(file) {}
    void Add(const std::vector<std::u32string> &lines) override
    {
        if (!is_first_) file_.Write("\f");
        is_first_ = false;
        std::string page;
        std::size_t kept = 0; // the empty lines at the foot are left to the form feed
        for (const std::u32string &line : lines) {
            page += Utf8(line);
            if (!page.empty() && page.back() != '\n') kept = page.size() + 1;
            page += '\n';
        }
        file_.Write(std::string_view(page).substr(0, kept));
    }
    void Finish() override { file_.PutInPlace(); }

  private:
    ProvisionalFile file_;
    bool is_first_ = true;
};

class PdfPages : public TextPages {
  public:
    PdfPages(const std::filesystem::path &file, const std::string &title, int columns, int lines)
        : paper_(PaperSizeOf("A4", columns > kUprightColumns)), file_(file, paper_, title),
          painter_(std::make_unique<PdfPainter>(&file_))
    {
        const double across = (paper_.width - 2 * kMargin) / (columns * kAdvance);
        const double down = (paper_.height - 2 * kMargin) / (lines * kLineSpacing);
        size_ = std::min(across, down);
        style_.font = kFont;
        style_.size = size_ * kPointsPerMillimetre;
        left_ = (paper_.width - columns * kAdvance * size_) / 2;
    }
    void Add(const std::vector<std::u32string> &lines) override
    {
        painter_->BeginPage(++pages_);
        double y = kMargin;
        for (const std::u32string &line : lines) {
            if (const std::string text = Utf8(line); !text.empty())
                painter_->Text(left_, y, 0, ItemAlign::Left, style_, text);
            y += size_ * kLineSpacing;
        }
        painter_->EndPage();
    }
    void Finish() override
    {
        painter_.reset();
        file_.PutInPlace();
    }

  private:
    PaperSize paper_;
    PdfFile file_;
    std::unique_ptr<PdfPainter> painter_;
    TextStyle style_;
    double size_ = 0; ///< of the letters, mm
    double left_ = 0; ///< where the lines begin
    long pages_ = 0;
};

} // namespace

struct CPrinter::State {
    std::string title;
    ReportDestination destination;
    std::unique_ptr<TemporaryPdf> temporary; ///< of preview and printer
    std::unique_ptr<TextPages> pages;
    std::vector<std::u32string> lines; ///< of the current page
    std::size_t columns = 0;
    long begun = 0;

    void Write(int line, std::size_t first, std::u32string_view text);
};

CPrinter::CPrinter() = default;
CPrinter::~CPrinter() = default;

void CPrinter::Open(const std::string &title, int columns, int lines, ReportDestination destination)
{
    if (columns < 1 || lines < 1) throw std::invalid_argument("a page has columns and lines");
    auto state = std::make_unique<State>();
    state->title = title;
    state->columns = static_cast<std::size_t>(columns);
    state->lines.assign(static_cast<std::size_t>(lines), {});
    state->begun = 1;
    switch (destination.target) {
    case ReportTarget::Csv:
    case ReportTarget::Xlsx:
        throw ReportError(fmt::format("{}: questa stampa è fatta di pagine; scegliere testo o PDF", title));
    case ReportTarget::Text:
        state->pages = std::make_unique<FormFeedPages>(destination.file);
        break;
    case ReportTarget::Preview:
    case ReportTarget::Printer:
        RequirePresenter(); // told now, not after all the work
        state->temporary = std::make_unique<TemporaryPdf>();
        [[fallthrough]];
    case ReportTarget::Pdf: {
        const std::filesystem::path &file = state->temporary ? state->temporary->Path() : destination.file;
        state->pages = std::make_unique<PdfPages>(file, title, columns, lines);
        break;
    }
    }
    state->destination = std::move(destination);
    state_ = std::move(state);
}

void CPrinter::State::Write(int line, std::size_t first, std::u32string_view text)
{
    if (line < 1 || static_cast<std::size_t>(line) > lines.size() || first >= columns) return;
    text = text.substr(0, columns - first);
    std::u32string &old = lines[static_cast<std::size_t>(line) - 1];
    if (old.size() < first + text.size()) old.resize(first + text.size(), U' ');
    old.replace(first, text.size(), text);
}

namespace {

/// One character for each column: what would move the rest of the line prints as a blank.
std::u32string Columns(std::string_view text)
{
    std::u32string columns;
    for (std::size_t position = 0; position < text.size();) {
        const char32_t character = DecodeUtf8(text, &position);
        if (character == kMalformedUtf8)
            columns += U'?';
        else
            columns += IsControlCharacter(character) ? U' ' : character;
    }
    return columns;
}

} // namespace

void CPrinter::Print(int line, int column, std::string_view text)
{
    if (state_ && column >= 1) state_->Write(line, static_cast<std::size_t>(column) - 1, Columns(text));
}

void CPrinter::PrintRight(int line, int column, std::string_view text)
{
    if (!state_ || column < 1) return;
    const std::u32string columns = Columns(text);
    const std::size_t end = static_cast<std::size_t>(column);
    const std::size_t cut = columns.size() > end ? columns.size() - end : 0; // the cents must stay
    state_->Write(line, end - (columns.size() - cut), std::u32string_view(columns).substr(cut));
}

void CPrinter::NewPage()
{
    if (!state_) return;
    state_->pages->Add(state_->lines);
    for (std::u32string &line : state_->lines) line.clear();
    ++state_->begun;
}

long CPrinter::Pages() const
{
    return state_ ? state_->begun : 0;
}

void CPrinter::Close()
{
    if (!state_) return;
    const std::unique_ptr<State> state = std::move(state_);
    state->pages->Add(state->lines);
    state->pages->Finish();
    if (!state->temporary) return;
    if (state->destination.target == ReportTarget::Printer) {
        RequirePresenter().Print(state->title, state->temporary->Path(), state->columns > kUprightColumns);
    } else {
        ReportRequest request; // has pages, but no rows to go on with
        request.title = state->title;
        RequirePresenter().Preview(request, state->temporary->Path());
    }
}
