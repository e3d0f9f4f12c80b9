#include "tarvodlg/widgets/Theme.h"

#include <QApplication>
#include <QPalette>
#include <QToolTip>
#include <array>
#include <cmath>

namespace {

/// Colours of one theme: a quiet blue-green on warm greys. Every text has at least 4.5:1 against what it stands on.
struct Colours {
    QRgb window, base, stripe, button, text, quiet, accent, on_accent, link, visited, alarm;
    QRgb bright_edge, edge, dark_edge, shadow, off; ///< off: disabled texts
};

constexpr Colours kLight{0xF3F4F3, 0xFFFFFF, 0xF1F5F5, 0xEAEDEC, 0x1E2426, 0x667073, 0x1B6C7B, 0xFFFFFF,
                         0x17697A, 0x5B5485, 0xB3261E, 0xFFFFFF, 0xC3CACA, 0x9AA4A5, 0x6B7476, 0x8C9598};
constexpr Colours kDark{0x25292B, 0x1B1F20, 0x212628, 0x32383B, 0xE3E7E7, 0x98A3A5, 0x26788A, 0xFFFFFF,
                        0x74C4D1, 0xB3ABDD, 0xFF8A80, 0x454D50, 0x3A4144, 0x171A1B, 0x0E1011, 0x737D80};

Theme g_theme = Theme::System;

QPalette PaletteOf(const Colours &colours)
{
    const std::array<std::pair<QPalette::ColorRole, QRgb>, 19> roles = {{
        {QPalette::Window, colours.window},
        {QPalette::WindowText, colours.text},
        {QPalette::Base, colours.base},
        {QPalette::AlternateBase, colours.stripe},
        {QPalette::ToolTipBase, colours.stripe},
        {QPalette::ToolTipText, colours.text},
        {QPalette::PlaceholderText, colours.quiet},
        {QPalette::Text, colours.text},
        {QPalette::Button, colours.button},
        {QPalette::ButtonText, colours.text},
        {QPalette::BrightText, colours.alarm},
        {QPalette::Light, colours.bright_edge},
        {QPalette::Midlight, colours.button},
        {QPalette::Mid, colours.edge},
        {QPalette::Dark, colours.dark_edge},
        {QPalette::Shadow, colours.shadow},
        {QPalette::HighlightedText, colours.on_accent},
        {QPalette::Link, colours.link},
        {QPalette::LinkVisited, colours.visited},
    }};
    QPalette palette;
    for (const auto &[role, colour] : roles) palette.setColor(role, QColor(colour));
    palette.setColor(QPalette::Highlight, QColor(colours.accent));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(colours.off));
    palette.setColor(QPalette::Disabled, QPalette::Base, QColor(colours.window));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(colours.edge));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, QColor(colours.text));
    return palette;
}

bool IsDarkPalette(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// Luminance as the rules for readable web pages count it, 0 to 1.
double Luminance(const QColor &colour)
{
    const auto linear = [](double share) {
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor &a, const QColor &b)
{
    const double first = Luminance(a) + 0.05, second = Luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

} // namespace

void ApplyTheme(Theme theme)
{
    // What the desktop is like can be seen only before the first palette of ours is set.
    static const bool is_desktop_dark = IsDarkPalette(QApplication::palette());
    g_theme = theme;
    const bool dark = theme == Theme::Dark || (theme == Theme::System && is_desktop_dark);
    const QPalette palette = PaletteOf(dark ? kDark : kLight);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

Theme CurrentTheme()
{
    return g_theme;
}

bool IsDark()
{
    return IsDarkPalette(QApplication::palette());
}

QColor Readable(const QColor &colour)
{
    if (!colour.isValid() || !IsDark()) return colour;
    const QPalette palette = QApplication::palette();
    // On every second row of a list too: with two contrasts a list would have the colour in two shades.
    const auto contrast = [&palette](const QColor &text) {
        return std::min(Contrast(text, palette.color(QPalette::Base)),
                        Contrast(text, palette.color(QPalette::AlternateBase)));
    };
    float hue = 0, saturation = 0, lightness = 0;
    colour.getHslF(&hue, &saturation, &lightness);
    QColor lighter = colour;
    for (; lightness < 1 && contrast(lighter) < 4.5; lightness += 0.02F)
        lighter = QColor::fromHslF(hue, saturation, lightness, colour.alphaF());
    return lighter;
}

QString PlainTip(const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped());
}
