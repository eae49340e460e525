#include "app/ScanProgram.h"
#include "support/MemoryDisk.h"

TEST_F(ScanProgramTest, OnAFullDiskEachDatabaseKeepsWhatItHasAndSaysSo) {
    const QByteArray good = makePicture(u"good.jpg"_s, 120);
    visit({u"--add"_s, pictures});
    for (const QString& file : {u"files.db"_s, u"thumbnail.db"_s}) {
        SCOPED_TRACE(file.toStdString());
        const QString place = temporary.filePath(u"disk-"_s + file);
        const support::MemoryDisk disk(place, "size=2m");
        if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk takes root";
        const QString stored = profile + u'/' + file;
        ASSERT_TRUE(QFile::copy(stored, place + u'/' + file) && QFile::remove(stored));
        ASSERT_TRUE(QFile::link(place + u'/' + file, stored));
        const QStringList before = inCatalogue();
        const auto known = static_cast<int>(before.size());
        for (int i = 0; i < 120; ++i) {
            const QString name = file.left(2) + QString::number(i) + QString(200, u'n');
            support::writeFile(pictures + u'/' + name + u".jpg"_s, good);
        }
        disk.fill(file == u"files.db" ? 24 * 1024 : 40 * 1024);

        // What can't be taken into the catalogue waits for a visit with room, and is not shown
        // before; thumbnails are only shown.
        const double shown = visit()[u"items"_s].toDouble(-1);
        EXPECT_EQ(shown, static_cast<double>(inCatalogue().size()));
        EXPECT_TRUE(file == u"files.db" ? shown < known + 120 : shown == known + 120) << shown;
        EXPECT_EQ(
            rows(u"select FileId from Thumbnail where FileId < 1"_s, "thumbnail.db"),
            QStringList());
        EXPECT_EQ(said.count('\n'), 1) << said.toStdString();
        EXPECT_TRUE(said.contains(QFile::encodeName(file))) << said.toStdString();
        const QStringList after = inCatalogue();
        EXPECT_TRUE(
            std::ranges::all_of(before, [&](const auto& name) { return after.contains(name); }));
        expectConsistentCatalogue();

        // With room again the next visit makes up for it, in silence.
        disk.free();
        visit();
        EXPECT_EQ(said.toStdString(), "");
        EXPECT_EQ(inCatalogue(), onDisk());
        EXPECT_EQ(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), onDisk().size());
        const QString back = temporary.filePath(file);
        ASSERT_TRUE(QFile::copy(place + u'/' + file, back));
        ASSERT_TRUE(QFile::remove(stored) && QFile::rename(back, stored));
    }
}
