#include "app/ScanProgram.h"

/// The pictures of one catalogue are never shown for those of another, whose ids are the same.
TEST_F(ScanProgramTest, aCatalogueBegunAnewHasThumbnailsOfItsOwn) {
    const auto thumbnails = [this] {
        return rows(u"select hex(Data) from Thumbnail"_s, "thumbnail.db");
    };
    support::writePicture(pictures + u"/a.png"_s, {40, 30});
    visit({u"--add"_s, pictures});
    const QStringList first = thumbnails();
    ASSERT_EQ(first.size(), 1);
    const QString files = profile + u"/files.db"_s;
    ASSERT_TRUE(QFile::rename(files, files + u".old"_s) && QFile::remove(pictures + u"/a.png"_s));
    support::writePicture(pictures + u"/b.png"_s, {12, 30});
    visit({u"--add"_s, pictures});
    const QStringList second = thumbnails();
    EXPECT_EQ(second.size(), 1);
    EXPECT_NE(second, first);
    EXPECT_EQ(rows(u"select Id from ImageFile"_s), QStringList{u"1"_s});
    EXPECT_EQ(visit()[u"thumbnails_built"_s].toInt(-1), 0) << "bound for good";
    EXPECT_EQ(thumbnails(), second);
}
