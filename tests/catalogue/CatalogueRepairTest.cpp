#include "catalogue/CatalogueRepair.h"
#include "catalogue/CatalogueCheck.h"
#include "catalogue/PBCatalogue.h"

#include "support/Rows.h"

namespace {

constexpr int pageSize = 4096;
constexpr int photographs = 600;
const QString marks = u"select Id,FileName,FileStars from ImageFile order by Id"_s;

void makeCatalogue(const QString& path) {
    support::Database db(path);
    PBCatalogue catalogue(db);
    ASSERT_TRUE(catalogue.checkTables_FilesDb() && db.beginTransaction());
    const qint64 root = catalogue.insertFolderAliasWithData("bookmark", 0, u"/photographs"_s, 0);
    const qint64 folder = catalogue.insertFolderWithAliasId(root, u"sub"_s);
    for (int i = 1; i <= photographs; ++i) {
        const qint64 file = catalogue.insertImageFileWithDictionary(
            {{u"FolderId"_s, folder},
             {u"FileName"_s, u"%1.jpg"_s.arg(i)},
             {u"FileStars"_s, i % 6}});
        catalogue.insertExifWithImageFileId(file, {{u"FNumber"_s, i / 10.0}});
    }
    ASSERT_TRUE(catalogue.removeImageFileAndMetadataWithFileId(photographs) && db.commit());
}

QString damageOf(const QString& path, CatalogueCheck::Depth depth, bool shouldStop = false) {
    support::Database db(path);
    return CatalogueCheck::firstDamage(db, depth, [=] { return shouldStop; });
}

} // namespace

TEST(CatalogueRepairTest, whicheverPageIsDamagedIsFoundAndAllElseIsSaved) {
    const QTemporaryDir folder;
    const QString sound = folder.filePath(u"files.db"_s);
    makeCatalogue(sound);
    using CatalogueCheck::Depth;
    for (const Depth depth : {Depth::Rows, Depth::Whole})
        EXPECT_EQ(damageOf(sound, depth), QString());
    // A copy that can't be written leaves nothing.
    EXPECT_EQ(CatalogueRepair::copyReadable(sound, folder.filePath(u"no/copy.db"_s)), std::nullopt);
    EXPECT_EQ(
        CatalogueRepair::copyReadable(folder.filePath(u"none/files.db"_s), sound + u'2'),
        std::nullopt);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{u"files.db"_s});
    const QStringList all = support::rowsOf(sound, marks);
    const QByteArray bytes = support::readFile(sound);
    const auto pages = static_cast<int>(bytes.size() / pageSize);
    const QString damaged = folder.filePath(u"damaged.db"_s);
    const QString copy = folder.filePath(u"copy.db"_s);
    int found = 0;
    int savedMost = 0;
    int countersKept = 0;
    // The first page holds the schema: a file without it is no catalogue any more.
    for (int page = 1; page < pages; ++page) {
        SCOPED_TRACE(page);
        QByteArray content = bytes;
        content.replace(page * pageSize, pageSize, QByteArray(pageSize, '\x7f'));
        support::writeFile(damaged, content);
        const QString damage = damageOf(damaged, Depth::Whole);
        if (damageOf(damaged, Depth::Rows).isEmpty()) continue; // of an index, or of no use
        EXPECT_NE(damage, QString());
        ++found;
        const auto saved = CatalogueRepair::copyReadable(damaged, copy);
        ASSERT_TRUE(saved);
        const QStringList rows = support::rowsOf(copy, marks);
        EXPECT_EQ(*saved, rows.size());
        EXPECT_TRUE(std::ranges::includes(support::sorted(all), support::sorted(rows)));
        // A leaf holds some two hundred and fifty photographs.
        if (rows.size() > photographs - 300) ++savedMost;
        EXPECT_EQ(damageOf(copy, Depth::Whole), QString());
        support::Database db(copy);
        support::expectConsistentCatalogue(db);
        const QString last = u"select seq from sqlite_sequence where name='ImageFile'"_s;
        if (support::rowsOf(db, last).value(0).toInt() == photographs) ++countersKept;
        ASSERT_TRUE(db.close() && QFile::remove(copy));
    }
    EXPECT_GT(found, 30);
    // Without the roots, the folders, a table's top or a part of the schema there is nothing to
    // show.
    EXPECT_GE(savedMost, found - 6);
    EXPECT_GE(countersKept, savedMost - 1);
}
