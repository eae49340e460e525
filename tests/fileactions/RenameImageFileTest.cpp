#include "fileactions/RenameImageFile.h"

#include "group/CatalogueFixture.h"
#include "support/Support.h"

#include <QDir>
#include <QTemporaryDir>

using fileactions::RenameOutcome;
using fileactions::RenameResult;

namespace {

class RenameImageFileTest : public support::CatalogueFixture {
protected:
    RenameImageFileTest() { support::writeFile(path(u"IMG_1.jpg"), "picture"); }

    QString path(QStringView name) const { return folder.filePath(name.toString()); }
    RenameOutcome rename(QStringView name) {
        return fileactions::renameImageFile(*item, name.toString(), database, folders);
    }
    QStringList onDisk() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
    QString inCatalogue() {
        FMResultSet row = database.executeQuery(QStringLiteral("select FileName from ImageFile"));
        return row.next() ? row.stringForColumnIndex(0) : QString();
    }

    QTemporaryDir folder;
    support::KnownFolders folders{{{1, folder.path()}}};
    std::shared_ptr<PBImageFileItem> item = addImage();
};

TEST_F(RenameImageFileTest, fileRowAndItemGetTheNameAlsoOneOfOtherCaseOrExtension) {
    for (const QString& name :
         {QStringLiteral("Ümläut 100%.jpg"), QStringLiteral("ümläut 100%.jpg"),
          QStringLiteral("plain")}) {
        EXPECT_EQ(rename(name).result, RenameResult::Renamed);
        EXPECT_EQ(onDisk(), QStringList{name});
        EXPECT_EQ(inCatalogue(), name);
        EXPECT_EQ(item->fileName(), name);
    }
    EXPECT_EQ(rename(u"plain").result, RenameResult::Unchanged);
    EXPECT_EQ(rename(u"").result, RenameResult::Unchanged);
}

TEST_F(RenameImageFileTest, whatCannotBeDoneIsToldAndChangesNothing) {
    support::writeFile(path(u"taken.jpg"), "another");
    for (const QString& name :
         {QStringLiteral("taken.jpg"), QStringLiteral("a/b.jpg"), QStringLiteral("../b.jpg"),
          QStringLiteral(".."), QString(300, u'x')}) {
        const RenameOutcome outcome = rename(name);
        EXPECT_EQ(outcome.result, RenameResult::Failed);
        EXPECT_FALSE(outcome.reason.isEmpty());
    }
    EXPECT_EQ(onDisk(), (QStringList{QStringLiteral("IMG_1.jpg"), QStringLiteral("taken.jpg")}));
    EXPECT_EQ(support::readFile(path(u"taken.jpg")), "another");
    EXPECT_EQ(inCatalogue(), QStringLiteral("IMG_1.jpg"));
    EXPECT_EQ(item->fileName(), QStringLiteral("IMG_1.jpg"));
}

TEST_F(RenameImageFileTest, aCatalogueThatTakesNoNameGivesTheFileItsOldOne) {
    ASSERT_TRUE(database.executeUpdate(QStringLiteral("drop table ImageFile")));
    EXPECT_EQ(rename(u"new.jpg").result, RenameResult::Failed);
    EXPECT_EQ(onDisk(), QStringList{QStringLiteral("IMG_1.jpg")});
}

} // namespace
