#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include "support/Support.h"

#include <QDirIterator>

#include <gtest/gtest.h>

namespace {

/// The colour of the most opaque pixel.
QColor strongestColor(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    QRgb strongest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > qAlpha(strongest)) strongest = image.pixel(x, y);
        }
    }
    return QColor::fromRgb(strongest);
}

TEST(IconsTest, everySymbolIsDrawnInTheColourAskedFor) {
    ASSERT_FALSE(Icons::named(QStringLiteral("split_left")).isNull());
    int symbols = 0;
    QDirIterator files(QStringLiteral(":/icons"));
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileInfo().completeBaseName();
        SCOPED_TRACE(name.toStdString());
        const QPixmap pixmap = Icons::pixmap(name, QSize(32, 32), 2.0, QColor(Qt::red));
        EXPECT_EQ(pixmap.size(), QSize(64, 64));
        EXPECT_EQ(strongestColor(pixmap).rgb(), QColor(Qt::red).rgb());
        ++symbols;
    }
    EXPECT_GE(symbols, 6);
}

TEST(IconsTest, selectedAndRestingFormsFollowTheTheme) {
    const QSize size(64, 64);
    const auto colorOf = [&](const char16_t* name) {
        return strongestColor(Icons::named(QString::fromUtf16(name)).pixmap(size, 1.0));
    };
    for (const auto scheme : {PBThemes::Scheme::Light, PBThemes::Scheme::Dark}) {
        PBThemes::apply(scheme);
        EXPECT_EQ(colorOf(u"moreInfo_s"), PBThemes::colors().accent);
        EXPECT_EQ(colorOf(u"moreInfo_n"), PBThemes::colors().icon);
    }
    PBThemes::apply(PBThemes::Scheme::Light);
    EXPECT_TRUE(Icons::named(QStringLiteral("no such symbol")).isNull());
}

TEST(PBThemesTest, textIsReadableOnEveryBackgroundOfBothThemes) {
    // Relative luminance and contrast as in the W3C's accessibility guidelines; 4.5 is their
    // minimum for text.
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto contrast = [&](const QColor& one, const QColor& other) {
        const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
        return (light + 0.05) / (dark + 0.05);
    };
    for (const auto scheme : {PBThemes::Scheme::Light, PBThemes::Scheme::Dark}) {
        PBThemes::apply(scheme);
        const PBThemes::Colors& colors = PBThemes::colors();
        for (const QColor& background :
             {colors.sidebar, colors.browser, colors.bar, colors.sheet, colors.groupHead}) {
            EXPECT_GE(contrast(colors.text, background), 7.0);
            EXPECT_GE(contrast(colors.secondaryText, background), 4.0);
        }
    }
    PBThemes::apply(PBThemes::Scheme::Light);
}

} // namespace
