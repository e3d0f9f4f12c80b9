#include "desk/ui/DeskSettings.h"

#include "desk/UserFolders.h"
#include "tarvodlg/widgets/Field.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QWidget>

namespace {

constexpr const char *kTheme = "aspetto/tema";
constexpr const char *kGeometry = "finestra/posizione";
constexpr std::pair<Theme, const char *> kThemes[] = {
    {Theme::System, "sistema"}, {Theme::Light, "chiaro"}, {Theme::Dark, "scuro"}};

QString SettingsFile()
{
    return ToQt((UserConfigFolder() / "desk.ini").string());
}

void PlaceInTheMiddle(QWidget *window)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const QFontMetrics font(window->font());
    const QSize wanted(font.averageCharWidth() * 170, font.height() * 46);
    QRect place(QPoint(), wanted.boundedTo(screen.size() * 0.95));
    place.moveCenter(screen.center());
    window->setGeometry(place);
}

} // namespace

Theme StoredTheme()
{
    const QString name = QSettings(SettingsFile(), QSettings::IniFormat).value(kTheme).toString();
    for (const auto &[theme, word] : kThemes)
        if (name == QLatin1String(word)) return theme;
    return Theme::System;
}

void StoreTheme(Theme theme)
{
    QSettings settings(SettingsFile(), QSettings::IniFormat);
    for (const auto &[known, word] : kThemes)
        if (known == theme) settings.setValue(kTheme, QLatin1String(word));
}

void RestoreWindow(QWidget *window)
{
    const QByteArray geometry = QSettings(SettingsFile(), QSettings::IniFormat).value(kGeometry).toByteArray();
    const bool is_restored = !geometry.isEmpty() && window->restoreGeometry(geometry) &&
                             QGuiApplication::screenAt(window->geometry().center()) != nullptr;
    if (!is_restored) PlaceInTheMiddle(window);
}

void StoreWindow(const QWidget *window)
{
    QSettings(SettingsFile(), QSettings::IniFormat).setValue(kGeometry, window->saveGeometry());
}
