#include "tarvodlg/widgets/Theme.h"

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <cmath>
#include <gtest/gtest.h>

namespace {

double Luminance(const QColor &colour)
{
    const auto linear = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

class ThemeTest : public testing::TestWithParam<Theme> {
  protected:
    ThemeTest() { ApplyTheme(GetParam()); }
    ~ThemeTest() override { ApplyTheme(Theme::System); }
};

TEST_P(ThemeTest, EveryTextIsReadable)
{
    EXPECT_EQ(IsDark(), GetParam() == Theme::Dark);
    const QPalette palette = QApplication::palette();
    using Role = QPalette::ColorRole;
    const std::vector<std::pair<Role, Role>> pairs = {{Role::WindowText, Role::Window},
                                                      {Role::Text, Role::Base},
                                                      {Role::Text, Role::AlternateBase},
                                                      {Role::ButtonText, Role::Button},
                                                      {Role::Link, Role::Base},
                                                      {Role::Link, Role::Window},
                                                      {Role::LinkVisited, Role::Base},
                                                      {Role::BrightText, Role::Base},
                                                      {Role::BrightText, Role::Window},
                                                      {Role::PlaceholderText, Role::Base},
                                                      {Role::Text, Role::Window}, // protected fields
                                                      {Role::ToolTipText, Role::ToolTipBase},
                                                      {Role::HighlightedText, Role::Highlight}};
    for (const auto &[text, ground] : pairs)
        EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5) << text << " on " << ground;
    EXPECT_GE(Contrast(palette.color(QPalette::Disabled, Role::Text), palette.color(Role::Window)), 2.5);
}

TEST_P(ThemeTest, ColoursOfRowsKeepTheirHue)
{
    const QColor paper = QApplication::palette().color(QPalette::Base);
    for (const QColor &colour : {QColor(0x8B0000), QColor(0x00, 0x00, 0xA0), QColor(0x00, 0x60, 0x20)}) {
        const QColor shown = Readable(colour);
        EXPECT_GE(Contrast(shown, paper), 4.5) << colour.name().toStdString();
        EXPECT_NEAR(shown.hslHueF(), colour.hslHueF(), 0.02);
    }
    EXPECT_FALSE(Readable(QColor()).isValid());
}

TEST_P(ThemeTest, IconMadeBeforeIsDrawnInTheColoursOfNow)
{
    ApplyTheme(GetParam() == Theme::Dark ? Theme::Light : Theme::Dark);
    const QIcon icon = TarvoIcon("tema"); // its circle is text, its right half accent
    const QImage before = icon.pixmap(QSize(24, 24), 2).toImage();
    ApplyTheme(GetParam());
    const QImage now = icon.pixmap(QSize(24, 24), 2).toImage();
    EXPECT_EQ(now.size(), QSize(48, 48)) << "sharp at double scale";
    EXPECT_EQ(now.pixelColor(34, 24), QApplication::palette().color(QPalette::Link));
    EXPECT_NE(before.pixelColor(34, 24), now.pixelColor(34, 24));
    const QImage disabled = icon.pixmap(QSize(24, 24), 2, QIcon::Disabled).toImage();
    EXPECT_LT(disabled.pixelColor(34, 24).alphaF(), 0.6F);
}

INSTANTIATE_TEST_SUITE_P(Both, ThemeTest, testing::Values(Theme::Light, Theme::Dark),
                         [](const auto &p) { return p.param == Theme::Light ? "Light" : "Dark"; });

TEST(Icons, EveryDrawingFillsItsSquare)
{
    const QStringList names = QDir(":/icons").entryList({"*.svg"});
    EXPECT_GE(names.size(), 41);
    for (const QString &file : names) {
        const QIcon icon = TarvoIcon(file.chopped(4));
        ASSERT_FALSE(icon.isNull()) << file.toStdString();
        const QImage image = icon.pixmap(QSize(24, 24), 1).toImage();
        int drawn = 0, clipped = 0;
        for (int x = 0; x < 24; ++x)
            for (int y = 0; y < 24; ++y) {
                const bool is_edge = x == 0 || y == 0 || x == 23 || y == 23;
                if (qAlpha(image.pixel(x, y)) > 128) is_edge ? ++clipped : ++drawn;
            }
        EXPECT_GT(drawn, 15) << file.toStdString();
        if (file != "lumera.svg") {
            EXPECT_EQ(clipped, 0) << file.toStdString() << " leaves the grid";
        }
    }
    EXPECT_TRUE(TarvoIcon("non-esiste").isNull());
}

} // namespace
