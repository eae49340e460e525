#include "app/ScanProgram.h"
#include "support/MemoryDisk.h"

TEST_F(ScanProgramTest, OnAFullDiskPhotographsAreShownWithoutThumbnailsAndItIsSaid) {
    makePicture(u"good.jpg"_s, 120);
    const QByteArray good = support::readFile(pictures + u"/good.jpg"_s);
    visit({u"--add"_s, pictures});
    const QString place = temporary.filePath(u"disk"_s);
    const support::MemoryDisk disk(place, "size=2m");
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk takes root";
    const QString stored = profile + u"/thumbnail.db"_s;
    ASSERT_TRUE(QFile::copy(stored, place + u"/thumbnail.db"_s) && QFile::remove(stored));
    ASSERT_TRUE(QFile::link(place + u"/thumbnail.db"_s, stored));
    for (int i = 0; i < 120; ++i)
        support::writeFile(pictures + u"/%1.jpg"_s.arg(i), good);
    disk.fill(40 * 1024);
    const auto thumbnails = [&](const QString& which = {}) {
        return rows(u"select FileId from Thumbnail"_s + which, "thumbnail.db").size();
    };
    EXPECT_EQ(visit()[u"items"_s].toInt(), 121);
    EXPECT_LT(thumbnails(), 121);
    EXPECT_EQ(thumbnails(u" where FileId < 1"_s), 0);
    EXPECT_TRUE(said.count('\n') == 1 && said.contains("thumbnail.db")) << said.toStdString();

    // With room again the next visit makes up for it, in silence.
    disk.free();
    visit();
    EXPECT_EQ(said.toStdString(), "");
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(thumbnails(), 121);
}
