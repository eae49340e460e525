#include "ui/Icons.h"
#include "library/FolderIcons.h"
#include "library/PBAliasObject.h"
#include "ui/GroupIcons.h"
#include "ui/PBThemes.h"

#include "support/Support.h"

#include <QDirIterator>
#include <QStandardPaths>
#include <QSvgRenderer>

namespace {

/// The colour of the most opaque pixel.
QColor strongestColor(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    QRgb strongest = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > qAlpha(strongest)) strongest = image.pixel(x, y);
    return QColor::fromRgb(strongest);
}

TEST(IconsTest, everyDrawingFillsItsGridInTheColourAskedFor) {
    ASSERT_FALSE(Icons::named(u"folder"_s).isNull());
    int drawings = 0;
    QDirIterator files(u":/icons"_s, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileInfo().completeBaseName();
        SCOPED_TRACE(files.filePath().toStdString());
        EXPECT_TRUE(QSvgRenderer(files.filePath()).isValid());
        const int side = files.filePath().contains(u"/24/") ? 24 : 32;
        const QPixmap pixmap = Icons::pixmap(name, QSize(side, side), 2.0, QColor(Qt::red));
        EXPECT_EQ(pixmap.size(), QSize(2 * side, 2 * side));
        EXPECT_EQ(strongestColor(pixmap).rgb(), QColor(Qt::red).rgb());
        ++drawings;
    }
    EXPECT_GE(drawings, 140);
}

TEST(IconsTest, everyNameInUseHasADrawing) {
    QSet<QString> names;
    for (int type = 0; type <= 63; ++type) {
        const group::IconName icon = group::imageWithGroupType(type);
        EXPECT_FALSE(Icons::ofGroup(icon).isNull()) << type;
    }
    for (const auto location :
         {QStandardPaths::PicturesLocation, QStandardPaths::DownloadLocation,
          QStandardPaths::DocumentsLocation, QStandardPaths::MoviesLocation,
          QStandardPaths::MusicLocation, QStandardPaths::DesktopLocation,
          QStandardPaths::HomeLocation})
        names.insert(FolderIcons::nameForPath(QStandardPaths::writableLocation(location)));
    names.insert(FolderIcons::nameForPath(u"/"_s));
    for (const std::uint64_t type : {PBAliasObject::Network, PBAliasObject::Removable})
        names.insert(FolderIcons::nameForType(type));
    names.insert(FolderIcons::aliasBadge());

    // What the sources ask for by name, and literals that look like a form of a symbol.
    names += support::namesInSources(
        QStringLiteral(VELMORA_SOURCES),
        uR"re(Icons::(?:named|pixmap)\(\s*(?:QStringLiteral\()?u?"([\w-]+)"|"([A-Za-z]\w*_[ns])")re"_s);
    EXPECT_GE(names.size(), 30);
    for (const QString& name : names)
        EXPECT_FALSE(Icons::named(name).isNull()) << name.toStdString();
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
