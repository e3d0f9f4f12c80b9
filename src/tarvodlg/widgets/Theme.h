#pragma once

#include <QIcon>
#include <QString>

enum class Theme { System, Light, Dark };

/// Colours of the whole program. System follows the desktop's own palette.
void ApplyTheme(Theme theme);
Theme CurrentTheme();
bool IsDark();

/// An icon of our own drawing (src/tarvodlg/widgets/icons/NAME.svg), in the text colour of the current palette, sharp
/// at every scale. An unknown name gives an empty icon.
QIcon TarvoIcon(const QString &name);

/// A tooltip that shows a text of the archive or of a file as it stands: Qt would take some for markup.
QString PlainTip(const QString &text);

/// A colour chosen for light backgrounds made readable on the current one; the hue stays.
QColor Readable(const QColor &colour);
