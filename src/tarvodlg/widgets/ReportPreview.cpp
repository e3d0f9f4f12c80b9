#include "tarvodlg/widgets/ReportPreview.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/print/ProvisionalFile.h"
#include "tarvodlg/widgets/QtUserInterface.h"
#include "tarvolumera/Company.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPdfPageNavigator>
#include <QPdfSelection>
#include <QPdfView>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <fstream>

#include <fmt/format.h>

namespace {

constexpr double kZoomStep = 1.2, kZoomMin = 0.2, kZoomMax = 6;
constexpr double kPointsPerInch = 72;
constexpr int kPrintResolution = 300; ///< dots per inch: a page of A4 is then 35 MB while it is sent
constexpr double kShareOfScreen = 0.9;
constexpr int kPatienceMs = 100; ///< how long the window may stand still while pages are searched

[[noreturn]] void FailReading(const std::string &title)
{
    throw FileError(fmt::format("Impossibile leggere le pagine di \"{}\"", title));
}

/// Copies the pages piece by piece. What stands in the target stays unless all of them could be read.
void CopyPages(const std::filesystem::path &pdf, const std::filesystem::path &target, const std::string &title)
{
    std::ifstream pages(pdf, std::ios::binary);
    if (!pages) FailReading(title);
    ProvisionalFile copy(target);
    for (std::string piece(1 << 16, '\0'); pages;) {
        pages.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        copy.Write(std::string_view(piece).substr(0, static_cast<std::size_t>(pages.gcount())));
    }
    if (pages.bad() || copy.Size() == 0) FailReading(title);
    copy.PutInPlace();
}

} // namespace

/// The pages in a scrolling view; the wheel zooms with Ctrl.
class PreviewPages : public QPdfView {
  public:
    explicit PreviewPages(QWidget *parent) : QPdfView(parent)
    {
        setPageMode(PageMode::MultiPage);
        setZoomMode(ZoomMode::FitToWidth);
        setFocusPolicy(Qt::StrongFocus);
        setAccessibleName(QStringLiteral("Pagine della stampa"));
    }
    std::function<void(double)> on_zoom;

  protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (!(event->modifiers() & Qt::ControlModifier)) return QPdfView::wheelEvent(event);
        if (event->angleDelta().y() != 0) on_zoom(event->angleDelta().y() > 0 ? kZoomStep : 1 / kZoomStep);
        event->accept();
    }
};

CReportPreview::CReportPreview(const ReportRequest &request, const std::filesystem::path &pdf, CWnd *parent)
    : CTarvoDialog(parent), request_(request), pdf_(pdf)
{
    setWindowTitle(ToQt(request.title));
    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    words_ = new QLineEdit(Content());
    words_->setPlaceholderText(QStringLiteral("Cerca nella stampa (Invio o F3: successivo)"));
    words_->setClearButtonEnabled(true);
    words_->hide();
    layout->addWidget(words_);
    view_ = new PreviewPages(Content());
    view_->setDocument(&document_);
    view_->on_zoom = [this](double factor) { ZoomBy(factor); };
    layout->addWidget(view_, 1);
    AddCommands();
    const QSize room = (parent ? parent->screen() : QApplication::primaryScreen())->availableSize();
    resize(room * kShareOfScreen);
}

// The view goes before the document that it shows.
CReportPreview::~CReportPreview()
{
    delete view_;
}

void CReportPreview::AddCommands()
{
    const auto has_rows = [this](CCmdUI *command) { command->Enable(!request_.layout.query.empty()); };
    AddCommand({.caption = "F9 - &Stampa",
                .tooltip = "Invia le pagine alla stampante",
                .icon = "stampa",
                .run = [this] { OnRecordStampa(); },
                .update = {},
                .shortcut = "Ctrl+P"});
    AddCommand({.caption = "F5 - &PDF",
                .tooltip = "Salva le pagine in un file PDF",
                .icon = "pdf",
                .run = [this] { OnPdf(); },
                .update = {},
                .shortcut = "Ctrl+S"});
    AddCommand({.caption = "F6 - &Excel",
                .tooltip = "Salva le righe in un foglio di calcolo",
                .icon = "excel",
                .run = [this] { OnExcel(); },
                .update = has_rows,
                .shortcut = {}});
    AddCommand({.caption = "F7 - &CSV",
                .tooltip = "Salva le righe in un file CSV",
                .icon = "csv",
                .run = [this] { OnCsv(); },
                .update = has_rows,
                .shortcut = {}});
    AddCommand({.caption = "F3 - &Trova",
                .tooltip = "Cerca un testo nelle pagine",
                .icon = "cerca",
                .run = [this] { OnTrova(); },
                .update = {},
                .shortcut = "Ctrl+F"});
}

bool CReportPreview::OnInitDialog()
{
    if (document_.load(ToQt(pdf_.string())) != QPdfDocument::Error::None)
        throw ReportError(fmt::format("Impossibile leggere le pagine di \"{}\"", request_.title));
    view_->setFocus();
    return true;
}

int CReportPreview::Page() const
{
    return view_->pageNavigator()->currentPage();
}

double CReportPreview::Zoom() const
{
    if (view_->zoomMode() == QPdfView::ZoomMode::Custom) return view_->zoomFactor();
    const double page_width = document_.pagePointSize(Page()).width() / kPointsPerInch * view_->logicalDpiX();
    const QMargins margins = view_->documentMargins();
    const int room = view_->viewport()->width() - margins.left() - margins.right();
    return page_width > 0 ? room / page_width : 1;
}

void CReportPreview::OnKickIdle()
{
    CTarvoDialog::OnKickIdle();
    SetStatus(QStringLiteral("Pagina %1 di %2 - %3%").arg(Page() + 1).arg(Pages()).arg(qRound(Zoom() * 100)));
}

// What is in the middle of the window stays there.
void CReportPreview::ZoomBy(double factor)
{
    QScrollBar *bar = view_->verticalScrollBar();
    const auto height = [&] { return static_cast<double>(bar->maximum() + bar->pageStep()); };
    const double middle = (bar->value() + bar->pageStep() / 2.0) / height();
    const double zoom = std::clamp(Zoom() * factor, kZoomMin, kZoomMax);
    view_->setZoomMode(QPdfView::ZoomMode::Custom);
    view_->setZoomFactor(zoom);
    bar->setValue(qRound(middle * height() - bar->pageStep() / 2.0));
}

void CReportPreview::GoTo(int page)
{
    view_->pageNavigator()->jump(page, {}, 0);
}

bool CReportPreview::PreTranslateMessage(QKeyEvent *message)
{
    if (words_->hasFocus()) {
        if (message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter) {
            FindNext();
            return true;
        }
        if (message->key() == Qt::Key_Escape) {
            words_->hide();
            view_->setFocus();
            return true;
        }
    } else if (ZoomKey(*message)) {
        return true;
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

bool CReportPreview::ZoomKey(const QKeyEvent &key)
{
    switch (key.key()) {
    case Qt::Key_Plus:
        ZoomBy(kZoomStep);
        return true;
    case Qt::Key_Minus:
        ZoomBy(1 / kZoomStep);
        return true;
    case Qt::Key_0:
        view_->setZoomMode(QPdfView::ZoomMode::FitToWidth);
        return true;
    case Qt::Key_Home:
        GoTo(0);
        return true;
    case Qt::Key_End:
        GoTo(Pages() - 1);
        return true;
    default:
        return false;
    }
}

void CReportPreview::OnTrova()
{
    const bool has_words = words_->isVisible() && !words_->text().isEmpty();
    words_->show();
    if (has_words && !words_->hasFocus()) return FindNext();
    words_->setFocus();
    words_->selectAll();
}

// From the page behind the one in view, once around.
void CReportPreview::FindNext()
{
    const QString words = words_->text().trimmed();
    if (words.isEmpty()) return;
    const QPointer<CReportPreview> alive(this);
    const int first = Page();
    QElapsedTimer still;
    still.start();
    for (int i = 1; i <= Pages(); ++i) {
        const int page = (first + i) % Pages();
        if (still.hasExpired(kPatienceMs)) {
            SetStatus(QStringLiteral("Ricerca: pagina %1 di %2").arg(page + 1).arg(Pages()));
            // Keys and clicks wait: a second search inside the first would lose its place.
            QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            if (!alive) return;
            still.start();
        }
        const qsizetype at = document_.getAllText(page).text().indexOf(words, 0, Qt::CaseInsensitive);
        if (at < 0) continue;
        const QPdfSelection found =
            document_.getSelectionAtIndex(page, static_cast<int>(at), static_cast<int>(words.size()));
        const QPointF place = found.boundingRectangle().topLeft();
        view_->pageNavigator()->jump(page, QPointF(0, std::max(0.0, place.y())), 0);
        return;
    }
    BeepRefused();
}

void CReportPreview::OnRecordStampa()
{
    const QSizeF page = document_.pagePointSize(0);
    PrintPdf(this, request_.title, pdf_, page.width() > page.height());
}

std::filesystem::path CReportPreview::PickTarget(const char *title, const char *filter, const char *extension) const
{
    FilePicking picking;
    picking.title = title;
    picking.filter = filter;
    picking.default_extension = extension;
    picking.proposed = CompanyFolder("out") / FileNameFrom(request_.title + "." + extension);
    picking.save = true;
    const std::vector<std::filesystem::path> picked = CurrentUserInterface().PickFiles(picking);
    return picked.empty() ? std::filesystem::path() : picked.front();
}

void CReportPreview::OnPdf()
{
    const std::filesystem::path file = PickTarget("Salva PDF", "Documenti PDF (*.pdf)|*.pdf||", "pdf");
    if (file.empty()) return;
    CopyPages(pdf_, file, request_.title);
    SetStatus("Scritto " + ToQt(file.string()));
}

void CReportPreview::OnExcel()
{
    SaveRows(PickTarget("Salva foglio di calcolo", "Fogli Excel (*.xlsx)|*.xlsx||", "xlsx"));
}

void CReportPreview::OnCsv()
{
    SaveRows(PickTarget("Salva CSV", "File CSV (*.csv)|*.csv||", "csv"));
}

void CReportPreview::SaveRows(const std::filesystem::path &file)
{
    if (file.empty()) return;
    CTarvoProgressDlg progress;
    progress.SetStatus(fmt::format("{}: scrittura delle righe...", request_.title));
    SAConnection connection;
    SACommand command;
    sqldit.OpenConnection(&connection, &command, true);
    RunReportRows(
        &command, request_,
        [&](std::vector<RowColumn> columns) { return OpenRows(file, request_.title, std::move(columns)); },
        [&](long rows) { progress.SetStatus(fmt::format("{}: {} righe...", request_.title, rows)); });
    SetStatus("Scritto " + ToQt(file.string()));
}

bool PrintPdf(CWnd *parent, const std::string &title, const std::filesystem::path &pdf, bool landscape)
{
    QPdfDocument document;
    if (document.load(ToQt(pdf.string())) != QPdfDocument::Error::None)
        throw ReportError(fmt::format("Impossibile leggere le pagine di \"{}\"", title));
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(ToQt(title));
    printer.setFullPage(true);
    const QSizeF points = document.pagePointSize(0);
    const QSizeF upright(std::min(points.width(), points.height()), std::max(points.width(), points.height()));
    printer.setPageSize(QPageSize(upright, QPageSize::Point, QString(), QPageSize::FuzzyMatch));
    printer.setPageOrientation(landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    QPrintDialog dialog(&printer, parent);
    dialog.setMinMax(1, document.pageCount());
    dialog.setOption(QAbstractPrintDialog::PrintPageRange);
    if (dialog.exec() != QDialog::Accepted) return false;

    printer.setResolution(kPrintResolution);
    const int first = printer.fromPage() > 0 ? printer.fromPage() : 1;
    const int last = printer.toPage() > 0 ? std::min(printer.toPage(), document.pageCount()) : document.pageCount();
    CTarvoProgressDlg progress;
    progress.SetStatus(fmt::format("{}: invio alla stampante...", title));
    progress.SetRange(first - 1, last);
    QPainter painter;
    if (!painter.begin(&printer)) throw ReportError("La stampante non risponde.");
    for (int page = first; page <= last; ++page) {
        if (page > first && !printer.newPage()) throw ReportError("La stampante non accetta altre pagine.");
        const QRect paper = printer.pageLayout().fullRectPixels(printer.resolution());
        painter.drawImage(paper, document.render(page - 1, paper.size()));
        progress.StepIt();
    }
    return true;
}

namespace {

class WindowPresenter : public ReportPresenter {
  public:
    void Preview(const ReportRequest &request, const std::filesystem::path &pdf) override
    {
        CReportPreview(request, pdf, WindowInFront()).DoModal();
    }
    bool Print(const std::string &title, const std::filesystem::path &pdf, bool landscape) override
    {
        return PrintPdf(WindowInFront(), title, pdf, landscape);
    }
};

} // namespace

void InstallReportPresenter()
{
    static WindowPresenter presenter;
    SetReportPresenter(&presenter);
}
