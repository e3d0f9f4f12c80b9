#include "tarvodlg/print/PagePainter.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/print/PageBuilder.h"
#include "tarvodlg/print/PdfFile.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <array>
#include <clocale>
#include <cmath>
#include <fmt/format.h>

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr double kLineWidth = 0.2; ///< mm

QString ToQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// A font with its measures on the device. Without kerning and ligatures a text is as wide as its letters, and the
/// letters of this part of the world are measured only once.
class PageFont {
  public:
    QFont font;
    QFontMetricsF metrics;

    PageFont(const QFont &wanted, QPaintDevice *device) : font(wanted, device), metrics(font, device)
    {
        for (std::size_t i = 0; i < widths_.size(); ++i)
            widths_[i] = metrics.horizontalAdvance(QChar(static_cast<char16_t>(i)));
    }
    double WidthOf(const QString &text) const
    {
        double width = 0;
        for (const QChar letter : text) {
            if (letter.unicode() >= widths_.size()) return metrics.horizontalAdvance(text);
            width += widths_[letter.unicode()];
        }
        return width;
    }

  private:
    std::array<double, 0x180> widths_;
};

/// As one line: what ends a line or moves along it shows as a blank.
QString OnLine(std::string_view text)
{
    QString line = ToQString(text);
    for (QChar &letter : line)
        if (letter.category() == QChar::Other_Control || letter == QChar::LineSeparator ||
            letter == QChar::ParagraphSeparator)
            letter = QLatin1Char(' ');
    return line;
}

/// Letters so much smaller, but still to be read. Half points, so that few fonts are made.
TextStyle Shrunk(TextStyle style, double part)
{
    constexpr double kSmallest = 3, kSteps = 2;
    style.size = std::max(kSmallest, std::floor(style.size * part * kSteps) / kSteps);
    return style;
}

/// The picture, with no more dots than the device has in its room. Null for what is no picture, or one too large for
/// Qt to unpack.
QImage ReadImage(const std::filesystem::path &file, const QSize &room)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return {}; // a pipe would be waited for
    QImageReader reader(ToQString(file.string()));
    const QSize size = reader.size(), less = size.scaled(room, Qt::KeepAspectRatio);
    const bool is_large = size.width() > less.width() && !less.isEmpty();
    if (is_large && reader.supportsOption(QImageIOHandler::ScaledSize)) {
        reader.setScaledSize(less);
        return reader.read();
    }
    constexpr qint64 kBytesPerDot = 4, kMegabyte = 1 << 20;
    if (qint64{size.width()} * size.height() * kBytesPerDot > QImageReader::allocationLimit() * kMegabyte) return {};
    const QImage image = reader.read();
    return is_large && !image.isNull() ? image.scaled(less, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : image;
}

/// How many letters of a word find room; one at least, and none of two halves.
template <class Width>
qsizetype FittingLetters(const QString &word, double width, Width width_of)
{
    qsizetype count = 1;
    while (count < word.size() && width_of(word.left(count + 1)) <= width) ++count;
    if (count < word.size() && word[count - 1].isHighSurrogate()) count += count > 1 ? -1 : 1;
    return count;
}

Qt::AlignmentFlag FlagOf(ItemAlign align)
{
    switch (align) {
    case ItemAlign::Right:
        return Qt::AlignRight;
    case ItemAlign::Center:
        return Qt::AlignHCenter;
    case ItemAlign::Left:
        break;
    }
    return Qt::AlignLeft;
}

} // namespace

struct PagePainter::State {
    QPagedPaintDevice *device;
    QPainter painter;
    std::map<std::string, std::unique_ptr<PageFont>> fonts;
    std::map<std::string, QImage> images;
    bool is_first_page = true;

    double Dots(double millimetres) const { return millimetres * device->logicalDpiX() / kMillimetresPerInch; }
    const PageFont &Font(const TextStyle &style);
    const QImage &ImageOf(const std::filesystem::path &file, const QSizeF &room);
};

const PageFont &PagePainter::State::Font(const TextStyle &style)
{
    std::string key = style.font;
    key += style.bold ? "|b" : "|";
    key += style.italic ? "i" : "";
    key += std::to_string(static_cast<int>(style.size * 100));
    std::unique_ptr<PageFont> &font = fonts[key];
    if (!font) {
        QFont wanted(ToQString(style.font));
        wanted.setPointSizeF(style.size);
        wanted.setBold(style.bold);
        wanted.setItalic(style.italic);
        wanted.setHintingPreference(QFont::PreferNoHinting); // same widths on screen, paper and PDF
        wanted.setKerning(false);
        wanted.setStyleStrategy(QFont::PreferNoShaping); // no ligatures, which searches in the PDF would miss; faster
        font = std::make_unique<PageFont>(wanted, device);
    }
    return *font;
}

// One image for all pages: a PDF then stores it once.
const QImage &PagePainter::State::ImageOf(const std::filesystem::path &file, const QSizeF &room)
{
    const auto key = fmt::format("{}|{:.0f}|{:.0f}", file.string(), room.width(), room.height());
    const auto [entry, is_new] = images.try_emplace(key);
    if (is_new) entry->second = ReadImage(file, room.toSize());
    return entry->second;
}

PagePainter::PagePainter(QPagedPaintDevice *device) : state_(std::make_unique<State>())
{
    EnsureGui();
    state_->device = device;
}

PagePainter::~PagePainter() = default;

void PagePainter::BeginPage(long)
{
    if (state_->is_first_page) {
        if (!state_->painter.begin(state_->device)) throw ReportError("La stampante non risponde.");
    } else if (!state_->device->newPage()) {
        throw ReportError("La stampante non accetta altre pagine.");
    }
    state_->is_first_page = false;
    state_->painter.setPen(QPen(Qt::black, state_->Dots(kLineWidth), Qt::SolidLine, Qt::FlatCap));
}

void PagePainter::Text(double x, double y, double w, ItemAlign align, const TextStyle &style, const std::string &text)
{
    const PageFont *font = &state_->Font(style);
    const double width = state_->Dots(w), ascent = font->metrics.ascent();
    QString shown = OnLine(text);
    double length = font->WidthOf(shown);
    if (w > 0 && length > width && style.shrinks) {
        font = &state_->Font(Shrunk(style, width / length));
        length = font->WidthOf(shown);
    }
    if (w > 0 && length > width) {
        shown = font->metrics.elidedText(shown, Qt::ElideRight, width);
        length = font->WidthOf(shown);
    }
    double left = state_->Dots(x);
    if (FlagOf(align) == Qt::AlignRight) left += width - length;
    if (FlagOf(align) == Qt::AlignHCenter) left += (width - length) / 2;
    QPainter &painter = state_->painter;
    const QPen pen = painter.pen();
    if (!style.color.empty()) painter.setPen(QColor(ToQString(style.color)));
    painter.setFont(font->font);
    painter.drawText(QPointF(left, state_->Dots(y) + ascent), shown);
    if (!style.color.empty()) painter.setPen(pen);
}

void PagePainter::Line(double x1, double y1, double x2, double y2)
{
    state_->painter.drawLine(QPointF(state_->Dots(x1), state_->Dots(y1)), QPointF(state_->Dots(x2), state_->Dots(y2)));
}

void PagePainter::Box(double x, double y, double w, double h)
{
    state_->painter.drawRect(QRectF(state_->Dots(x), state_->Dots(y), state_->Dots(w), state_->Dots(h)));
}

void PagePainter::Image(double x, double y, double w, double h, const std::filesystem::path &file)
{
    const QSizeF room(state_->Dots(w), state_->Dots(h));
    const QImage &image = state_->ImageOf(file, room);
    if (image.isNull()) return;
    const QSizeF size = QSizeF(image.size()).scaled(room, Qt::KeepAspectRatio);
    state_->painter.drawImage(QRectF(QPointF(state_->Dots(x), state_->Dots(y)), size), image);
}

void PagePainter::EndPage() {}

std::vector<std::string> PagePainter::Wrapped(double w, const TextStyle &style, const std::string &text)
{
    const PageFont &font = state_->Font(style);
    const double width = state_->Dots(w);
    const auto width_of = [&font](const QString &words) { return font.WidthOf(words); };
    std::vector<std::string> lines;
    for (const QString &paragraph : ToQString(text).split('\n')) {
        QString line;
        for (const QString &word : paragraph.split(' ')) {
            const QString longer = line.isEmpty() ? word : line + ' ' + word;
            if (!line.isEmpty() && font.WidthOf(longer) > width) {
                lines.push_back(line.toStdString());
                line = word;
            } else {
                line = longer;
            }
            while (line.size() > 1 && font.WidthOf(line) > width) { // a word without end
                const qsizetype count = FittingLetters(line, width, width_of);
                if (count == line.size()) break;
                lines.push_back(line.left(count).toStdString());
                line.remove(0, count);
            }
        }
        lines.push_back(line.toStdString());
    }
    return lines;
}

ReportResult WritePdf(SACommand *cmd, const ReportRequest &request, const std::filesystem::path &file,
                      const std::function<void(long)> &progress)
{
    PdfFile pdf(file, PaperOf(request), request.title.empty() ? request.layout.title : request.title);
    ReportResult result;
    {
        PdfPainter painter(&pdf);
        result = RunReport(cmd, request, painter, progress);
    }
    pdf.PutInPlace();
    return result;
}

void EnsureGui()
{
    if (QCoreApplication::instance() != nullptr) return;
    static char program[] = "lumera", option[] = "-platform", platform[] = "offscreen";
    static char *arguments[] = {program, option, platform, nullptr};
    static int count = 3;
    // Qt remarks on the environment of a machine without a desktop; nobody who prints to a file wants to read that.
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    // Never destroyed: it would go after things of Qt's libraries that it needs.
    static const auto *application = new QGuiApplication(count, arguments);
    static_cast<void>(application);
    qInstallMessageHandler(handler);
    std::setlocale(LC_NUMERIC, "C"); // Qt takes the user's, and files would get decimal commas
}
