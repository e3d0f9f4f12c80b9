#include "einvoice/ui/InvoicePane.h"

#include "tarvodlg/widgets/Field.h"

#include <QBuffer>
#include <QLabel>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QScrollBar>
#include <QStackedLayout>
#include <QWheelEvent>
#include <algorithm>

namespace {

constexpr double kZoomStep = 1.2, kZoomMin = 0.2, kZoomMax = 6;
constexpr double kPointsPerInch = 72;

/// The pages; the wheel zooms with Ctrl, as in a print preview.
class InvoicePages : public QPdfView {
  public:
    explicit InvoicePages(QWidget *parent) : QPdfView(parent)
    {
        setPageMode(PageMode::MultiPage);
        setZoomMode(ZoomMode::FitToWidth);
        setAccessibleName(QStringLiteral("Pagine della fattura"));
        setFocusPolicy(Qt::NoFocus);
        viewport()->setFocusPolicy(Qt::NoFocus);
        horizontalScrollBar()->setFocusPolicy(Qt::NoFocus);
        verticalScrollBar()->setFocusPolicy(Qt::NoFocus);
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

} // namespace

struct InvoicePane::View {
    QByteArray bytes;
    QBuffer file;
    QPdfDocument document;
    InvoicePages *pages = nullptr;
    QLabel *fault = nullptr;
    QStackedLayout *layout = nullptr;

    double Zoom() const
    {
        if (pages->zoomMode() == QPdfView::ZoomMode::Custom) return pages->zoomFactor();
        const int page = pages->pageNavigator()->currentPage();
        const double page_width = document.pagePointSize(page).width() / kPointsPerInch * pages->logicalDpiX();
        const QMargins margins = pages->documentMargins();
        const int room = pages->viewport()->width() - margins.left() - margins.right();
        return page_width > 0 ? room / page_width : 1;
    }
};

InvoicePane::InvoicePane(const std::string &pdf, QWidget *parent) : QWidget(parent), view_(std::make_unique<View>())
{
    View &v = *view_;
    setFocusPolicy(Qt::NoFocus);
    v.pages = new InvoicePages(this);
    v.pages->on_zoom = [this](double factor) { ZoomBy(factor); };
    v.fault = new QLabel(this);
    v.fault->setWordWrap(true);
    v.fault->setAlignment(Qt::AlignCenter);
    v.fault->setTextFormat(Qt::PlainText);
    v.layout = new QStackedLayout(this);
    v.layout->addWidget(v.pages);
    v.layout->addWidget(v.fault);

    v.bytes = QByteArray(pdf.data(), static_cast<qsizetype>(pdf.size()));
    v.file.setBuffer(&v.bytes);
    v.file.open(QIODevice::ReadOnly);
    v.document.load(&v.file);
    if (v.document.status() == QPdfDocument::Status::Ready && v.document.pageCount() > 0)
        v.pages->setDocument(&v.document);
    else
        ShowFault("Le pagine della fattura non possono essere mostrate.");
}

// The view goes before the document that it shows.
InvoicePane::~InvoicePane()
{
    delete view_->pages;
}

bool InvoicePane::ShowsPages() const
{
    return view_->layout->currentWidget() == view_->pages;
}

void InvoicePane::ShowFault(const std::string &text)
{
    view_->fault->setText(ToQt(text));
    view_->layout->setCurrentWidget(view_->fault);
}

void InvoicePane::ScrollPages(int steps)
{
    QScrollBar *bar = view_->pages->verticalScrollBar();
    bar->setValue(bar->value() + steps * bar->pageStep() / 2);
}

// What is in the middle of the pane stays there.
void InvoicePane::ZoomBy(double factor)
{
    if (!ShowsPages()) return;
    QPdfView *pages = view_->pages;
    QScrollBar *bar = pages->verticalScrollBar();
    const auto height = [&] { return static_cast<double>(bar->maximum() + bar->pageStep()); };
    const double middle = (bar->value() + bar->pageStep() / 2.0) / height();
    if (qFuzzyCompare(factor, 1.0)) {
        pages->setZoomMode(QPdfView::ZoomMode::FitToWidth);
    } else {
        const double zoom = std::clamp(view_->Zoom() * factor, kZoomMin, kZoomMax);
        pages->setZoomMode(QPdfView::ZoomMode::Custom);
        pages->setZoomFactor(zoom);
    }
    bar->setValue(qRound(middle * height() - bar->pageStep() / 2.0));
}

QSize InvoicePane::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 40};
}
