#include "browser/BrowserDragOut.h"

#include <QUrl>

#include <gtest/gtest.h>

namespace {

TEST(BrowserDragOutTest, carriesUrlsAndShowsABadgeForSeveral) {
    const QStringList paths{QStringLiteral("/p/a b.jpg"), QStringLiteral("/p/c#.jpg")};
    const auto mime = BrowserDragOut::mimeData(paths);
    ASSERT_EQ(mime->urls().size(), 2);
    EXPECT_EQ(mime->urls()[1].toLocalFile(), paths[1]);
    EXPECT_EQ(mime->text(), paths.join(u'\n'));

    QImage thumbnail(100, 50, QImage::Format_RGB32);
    thumbnail.fill(Qt::blue);
    const auto badgeAt = [&](qsizetype count) {
        const QImage picture = BrowserDragOut::picture(thumbnail, {80, 160}, 90, count, 2);
        EXPECT_EQ(picture.size(), QSize(160, 320));
        EXPECT_GT(picture.pixelColor(80, 300).blue(), 200); // turned, it fills its place
        return picture.pixelColor(2 * (80 - 5 - 17), 2 * 12).red();
    };
    EXPECT_LT(badgeAt(1), 50);
    EXPECT_GT(badgeAt(2), 150);
    EXPECT_FALSE(BrowserDragOut::picture({}, {30, 30}, 0, 12345, 1).isNull());
}

} // namespace
