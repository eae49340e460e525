#include "scan/ScanSupport.h"
#include "support/MemoryDisk.h"

namespace {

using support::words;

struct AwayFilesTest : ScanTest {
    /// The two ways in which files are compared with the catalogue.
    void look(bool byScan) { byScan ? scan() : watch(true); }
    /// Names of the images on display that are away.
    QStringList away() const {
        QStringList names;
        for (const auto& item : items())
            if (item->isAway()) names.append(item->fileName());
        return support::sorted(names);
    }
    /// Ids and stars of all images: what would be lost with the rows.
    QStringList marks() {
        return rows(u"select FileName,Id,FileStars from ImageFile order by 1"_s);
    }
    void scanAndMark() {
        scan();
        execute(u"update ImageFile set FileStars = 4"_s);
    }
};

} // namespace

TEST_F(AwayFilesTest, FilesThatCannotBeLookedAtKeepTheirRowsAndAreGrey) {
    makePictures("f/a.jpg f/b.jpg c.jpg d.jpg e.jpg");
    scanAndMark();
    scan();
    const QStringList before = marks();
    const QString saved = u".saved-"_s;
    for (const bool byScan : {false, true}) {
        // Something that no look gets past, as at a failing disk: each leads to itself.
        for (const QString& name : words("f c.jpg"))
            ASSERT_TRUE(
                QFile::rename(path(name), path(saved + name)) && QFile::link(name, path(name)));
        look(byScan);
        EXPECT_EQ(marks(), before);
        EXPECT_EQ(away(), words("a.jpg b.jpg c.jpg"));
        EXPECT_EQ(shown().size(), 5);
        for (const QString& name : words("f c.jpg"))
            ASSERT_TRUE(QFile::remove(path(name)) && QFile::rename(path(saved + name), path(name)));
        look(byScan);
        EXPECT_EQ(marks(), before);
        EXPECT_EQ(away(), QStringList());
    }
    EXPECT_EQ(count(files, "Folder"), 2);
    // What is gone goes, as ever.
    QFile::remove(path(u"d.jpg"_s));
    look(false);
    QFile::remove(path(u"e.jpg"_s));
    QDir(path(u"f"_s)).removeRecursively();
    look(true);
    EXPECT_EQ(marks(), before.mid(2, 1));
    EXPECT_EQ(count(files, "Folder"), 1);
}

TEST_F(AwayFilesTest, WhenTheDiskOfARootWithinHasLeftItsRowsStayAndItsImagesAreGrey) {
    support::MemoryDisk disk(path(u"disk"_s));
    if (!disk.isMounted()) return support::rerunWhereDisksCanBeMounted();
    makePictures("disk/in/x.jpg disk/y.jpg 1.jpg 2.jpg 3.jpg 4.jpg");
    const auto bookmark =
        platform::Bookmark::bookmarkOfFolder(path(u"disk"_s), platform::Volumes());
    ASSERT_TRUE(bookmark);
    const auto inner = PBAliasObject::aliasObjectWithId(
        PBCatalogue(files).insertFolderAliasWithData(bookmark->data(), 2, path(u"disk"_s), 0),
        bookmark->data(), QUrl::fromLocalFile(path(u"disk"_s)), path(u"disk"_s), 0, 2);
    aliasManager.addAliasObject(inner);
    scanAndMark();
    scan();
    const QStringList before = marks();
    using Outcome = platform::Resolution::Outcome;
    aliasServices.answers[root->aliasData()] = {Outcome::Found, path({})};
    aliasServices.answers[inner->aliasData()] = {Outcome::VolumeAbsent, {}};

    // Nobody has heard of it yet: where the disk was is an empty folder.
    disk.leave();
    QFile::remove(path(u"1.jpg"_s));
    look(false);
    EXPECT_EQ(marks(), before.mid(1));
    EXPECT_EQ(away(), words("x.jpg y.jpg"));
    const auto displayed = workTree;
    QFile::remove(path(u"2.jpg"_s));
    look(true);
    EXPECT_EQ(marks(), before.mid(2));
    // The root has no place any more.
    workTree = displayed;
    aliasManager.volumDidUnmount({});
    ASSERT_FALSE(inner->isMounted());
    QFile::remove(path(u"3.jpg"_s));
    look(false);
    EXPECT_EQ(marks(), before.mid(3));
    EXPECT_EQ(away(), words("x.jpg y.jpg"));
    EXPECT_EQ(count(files, "Folder"), 3);
}
