#include "ui/Icons.h"
#include "ui/GroupIcons.h"
#include "ui/PBThemes.h"

#include "support/Support.h"

#include <QDirIterator>

namespace {

/// The colour of the most opaque pixel.
QColor strongestColor(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    QRgb strongest = 0;
    for (int place = 0; place < image.width() * image.height(); ++place) {
        const QRgb pixel = image.pixel(place % image.width(), place / image.width());
        if (qAlpha(pixel) > qAlpha(strongest)) strongest = pixel;
    }
    return QColor::fromRgba(strongest);
}

TEST(IconsTest, everyDrawingFillsItsGridInTheColourAskedFor) {
    QDirIterator files(u":/icons"_s, QDir::Files, QDirIterator::Subdirectories);
    EXPECT_TRUE(files.hasNext());
    while (files.hasNext()) {
        files.next();
        // A cursor lies on any picture and has both colours of its own.
        if (files.fileName().endsWith(u"_cursor.svg")) continue;
        SCOPED_TRACE(files.filePath().toStdString());
        const int side = files.filePath().contains(u"/24/") ? 24 : 32;
        const QString name = files.fileInfo().completeBaseName();
        const QPixmap pixmap = Icons::pixmap(name, QSize(side, side), 2.0, Qt::red);
        EXPECT_EQ(pixmap.size(), QSize(2 * side, 2 * side));
        EXPECT_EQ(strongestColor(pixmap).rgb(), QColor(Qt::red).rgb());
    }
}

TEST(IconsTest, formsAndStatesHaveTheirColours) {
    PBThemes::apply(PBThemes::Scheme::Light);
    const PBThemes::Colors& colors = PBThemes::colors();
    const std::tuple<QString, QIcon::Mode, QIcon::State, QColor> cases[] = {
        {u"folder"_s, QIcon::Normal, QIcon::Off, colors.icon},
        {u"folder_n"_s, QIcon::Normal, QIcon::Off, colors.icon},
        {u"folder_s"_s, QIcon::Normal, QIcon::Off, colors.accent},
        {u"folder"_s, QIcon::Normal, QIcon::On, colors.accent},
        {u"folder"_s, QIcon::Selected, QIcon::On, Qt::white},
        {u"flag_16_s"_s, QIcon::Normal, QIcon::Off, colors.flag},
        {u"star_16_s"_s, QIcon::Normal, QIcon::Off, colors.star}};
    for (const auto& [name, mode, state, color] : cases) {
        const QPixmap pixmap = Icons::named(name).pixmap(QSize(32, 32), mode, state);
        EXPECT_EQ(strongestColor(pixmap).rgb(), color.rgb()) << name.toStdString();
    }
    const QPixmap disabled = Icons::named(u"folder"_s).pixmap(QSize(32, 32), QIcon::Disabled);
    EXPECT_NEAR(strongestColor(disabled).alpha(), 0.4 * 255, 20); // of tint and line together
    EXPECT_TRUE(Icons::ofGroup({}).isNull());
}

TEST(IconsTest, everyNameInUseHasADrawing) {
    for (int type = 0; type <= 63; ++type)
        EXPECT_FALSE(Icons::ofGroup(group::imageWithGroupType(type)).isNull()) << type;
    // What the sources ask for by name, and literals that look like a form of a symbol or a
    // folder's.
    const QSet<QString> names = support::namesInSources(
        QStringLiteral(VELMORA_SOURCES),
        uR"re(Icons::(?:named|pixmap)\(\s*(?:QStringLiteral\()?u?"([\w-]+)"|"([A-Za-z]\w*_[ns])")re"
        uR"re(|"((?:folder|user|drive|network|emblem)-[a-z-]+)")re"_s);
    EXPECT_TRUE(names.size() >= 30 && names.contains(u"user-home"_s));
    for (const QString& name : names)
        EXPECT_FALSE(Icons::named(name).isNull()) << name.toStdString();
}

} // namespace
