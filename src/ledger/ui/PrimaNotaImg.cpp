#include "ledger/ui/PNotaAllegati.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/Attachments.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace {

constexpr double kZoomStep = 1.25, kZoomLeast = 0.05, kZoomMost = 8;
constexpr std::size_t kImageBytesMax = 30 * 1024 * 1024;

/// The picture in some bytes, turned as the camera held it; a null one when they are none. @param format  gets "PNG"
QImage Decode(std::string_view bytes, std::string *format)
{
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    *format = reader.format().toUpper().toStdString();
    return reader.read();
}

} // namespace

/// Draws the part of the image that is in sight. A label would keep the whole of it in the size it is shown in, which
/// at eight times a scanned page is more than there is memory.
class DocumentView : public QWidget {
  public:
    void SetImage(const QImage &image)
    {
        pixmap_ = QPixmap::fromImage(image);
        update();
    }

  protected:
    void paintEvent(QPaintEvent *) override
    {
        if (pixmap_.isNull()) return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, width() < pixmap_.width());
        painter.drawPixmap(rect(), pixmap_);
    }

  private:
    QPixmap pixmap_;
};

CPrimaNotaImg::CPrimaNotaImg(long entry, CWnd *parent)
    : CTarvoDialog(parent), entry_(entry), area_(new QScrollArea(this)), view_(new DocumentView)
{
    setWindowTitle(ToQt(fmt::format("Immagine del movimento n. {}", entry)));
    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area_);
    area_->setWidget(view_);
    area_->setAlignment(Qt::AlignCenter);
    area_->setAccessibleName("Immagine");
    AddCommand({.caption = "F3 - &Nuova immagine", .icon = "nuovo", .run = [this] { OnRecordNuovo(); }});
    const auto has_image = [this](CCmdUI *command) { command->Enable(!image_.isNull()); };
    AddCommand({.caption = "&Ingrandisci",
                .tooltip = "Anche con il tasto +",
                .icon = "zoom-piu",
                .run = [this] { SetZoom(zoom_ * kZoomStep); },
                .update = has_image});
    AddCommand({.caption = "&Riduci",
                .tooltip = "Anche con il tasto -",
                .icon = "zoom-meno",
                .run = [this] { SetZoom(zoom_ / kZoomStep); },
                .update = has_image});
    AddCommand({.caption = "&Pagina intera",
                .tooltip = "Anche con il tasto 0; con 1 la grandezza naturale",
                .run = [this] { FitZoom(); },
                .update = has_image});
    AddCommand(
        {.caption = "F6 - Elimina", .icon = "elimina", .run = [this] { OnRecordElimina(); }, .update = has_image});
    resize((QSize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 40))
               .boundedTo(QGuiApplication::primaryScreen()->availableSize() * 0.9));
}

CPrimaNotaImg::~CPrimaNotaImg() = default;

bool CPrimaNotaImg::OnInitDialog()
{
    const bool loaded = Guarded(LUMERA_TAG, [this] { Load(); });
    area_->setFocus();
    return loaded;
}

bool CPrimaNotaImg::PreTranslateMessage(QKeyEvent *message)
{
    const bool plain = (message->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) == 0;
    if (plain && !image_.isNull()) {
        switch (message->key()) {
        case Qt::Key_Plus:
            SetZoom(zoom_ * kZoomStep);
            return true;
        case Qt::Key_Minus:
            SetZoom(zoom_ / kZoomStep);
            return true;
        case Qt::Key_0:
            FitZoom();
            return true;
        case Qt::Key_1:
            SetZoom(1);
            return true;
        default:
            break;
        }
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

void CPrimaNotaImg::Load()
{
    PNOTA_IMMAGINE record;
    image_ = {};
    view_->SetImage(image_);
    if (!sqlpni.Search(nullptr, entry_, &record)) {
        view_->resize(0, 0);
        return SetStatus("Nessuna immagine: F3 ne inserisce una");
    }
    std::string format;
    image_ = Decode(AsText(record.pni_data), &format);
    if (image_.isNull())
        return SetStatus(ToQt(fmt::format("L'immagine ({}) non si può mostrare", OnOneLine(record.pni_formato))));
    view_->SetImage(image_);
    FitZoom();
}

void CPrimaNotaImg::SetZoom(double zoom)
{
    if (image_.isNull()) return;
    const double before = zoom_;
    zoom_ = std::clamp(zoom, kZoomLeast, kZoomMost);
    view_->resize((QSizeF(image_.size()) * zoom_).toSize().expandedTo({1, 1}));
    for (QScrollBar *bar : {area_->horizontalScrollBar(), area_->verticalScrollBar()}) // the middle stays the middle
        bar->setValue(static_cast<int>(std::lround((bar->value() + bar->pageStep() / 2.0) * zoom_ / before)) -
                      bar->pageStep() / 2);
    SetStatus(ToQt(fmt::format("{} x {} punti, {} %", image_.width(), image_.height(), std::lround(zoom_ * 100))));
}

void CPrimaNotaImg::FitZoom()
{
    const QSizeF room = area_->maximumViewportSize();
    SetZoom(std::min({room.width() / image_.width(), room.height() / image_.height(), 1.0}));
}

void CPrimaNotaImg::OnRecordNuovo()
{
    Guarded(LUMERA_TAG, [this] {
        FilePicking picking;
        picking.title = "Immagine del documento";
        picking.filter = "Immagini (*.png;*.jpg;*.jpeg;*.bmp;*.gif)|*.png;*.jpg;*.jpeg;*.bmp;*.gif||";
        const auto paths = CurrentUserInterface().PickFiles(picking);
        if (paths.empty()) return;
        PNOTA_IMMAGINE record, present;
        std::string format;
        try {
            const std::string bytes = ReadWholeFile(paths.front(), kImageBytesMax);
            if (Decode(bytes, &format).isNull()) throw FileError("non è un'immagine che si possa mostrare.");
            record.pni_data = ToBytes(bytes);
        } catch (const FileError &error) {
            AfxMessageBox(fmt::format("{}: {}", paths.front().filename().string(), error.what()), MB_OK | MB_ICONSTOP);
            return;
        }
        const bool replaces = sqlpni.Search(nullptr, entry_, &present);
        if (replaces && AfxMessageBox("Il movimento ha già un'immagine.\n\nVuoi sostituirla?",
                                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
            return;
        record.pni_codice = entry_;
        record.pni_formato = format;
        sqlpni.SqlTransaction(nullptr, replaces ? kUpdate : kInsert, &record);
        Load();
    });
}

void CPrimaNotaImg::OnRecordElimina()
{
    if (AfxMessageBox("Vuoi eliminare l'immagine del movimento?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    Guarded(LUMERA_TAG, [this] {
        PNOTA_IMMAGINE record;
        record.pni_codice = entry_;
        sqlpni.SqlTransaction(nullptr, kDelete, &record);
        Load();
    });
}
