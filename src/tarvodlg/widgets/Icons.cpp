#include "tarvodlg/widgets/Theme.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace {

// The colours that the drawings have in their files, in the place of those of the palette.
constexpr char kTextPlaceholder[] = "#000000", kAccentPlaceholder[] = "#00808f";
constexpr double kFaded = 0.4; ///< opacity of an icon that is switched off

/// Draws a picture in the colours that the palette has when it is drawn, so that an icon made once fits every theme.
class DrawingEngine : public QIconEngine {
  public:
    DrawingEngine(QString name, QByteArray drawing) : name_(std::move(name)), drawing_(std::move(drawing)) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, scaledPixmap(rect.size() * scale, mode, state, scale));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QApplication::palette();
        const bool is_selected = mode == QIcon::Selected;
        const QColor text = palette.color(is_selected ? QPalette::HighlightedText : QPalette::WindowText);
        const QColor accent = is_selected ? text : palette.color(QPalette::Link);
        const QString key = QStringLiteral("tarvo-%1-%2x%3-%4-%5-%6")
                                .arg(name_)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(text.name(), accent.name())
                                .arg(static_cast<int>(mode));
        QPixmap pixmap;
        if (!QPixmapCache::find(key, &pixmap)) {
            pixmap = Draw(size, text, accent, mode == QIcon::Disabled ? kFaded : 1);
            QPixmapCache::insert(key, pixmap);
        }
        return pixmap;
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        QPixmap drawn = pixmap(size, mode, state); // the size is in the pixels of the device already
        drawn.setDevicePixelRatio(scale);
        return drawn;
    }

    QIconEngine *clone() const override { return new DrawingEngine(*this); }
    QString key() const override { return QStringLiteral("tarvo"); }
    QString iconName() override { return name_; }
    bool isNull() override { return drawing_.isEmpty(); }

  private:
    QPixmap Draw(const QSize &size, const QColor &text, const QColor &accent, double opacity) const
    {
        QByteArray coloured = drawing_;
        coloured.replace(kTextPlaceholder, text.name().toLatin1());
        coloured.replace(kAccentPlaceholder, accent.name().toLatin1());
        QSvgRenderer renderer(coloured);
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter, QRectF(QPointF(), QSizeF(size)));
        if (opacity < 1) { // faded as a whole: line by line, their crossings would show
            painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
            painter.fillRect(pixmap.rect(), QColor(0, 0, 0, static_cast<int>(255 * opacity)));
        }
        return pixmap;
    }

    QString name_;
    QByteArray drawing_;
};

} // namespace

QIcon TarvoIcon(const QString &name)
{
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (name.isEmpty() || !file.open(QIODevice::ReadOnly)) return {};
    return QIcon(new DrawingEngine(name, file.readAll()));
}
