#include "fileactions/RenameImageFile.h"

#include "fileactions/NameToGive.h"

#include "group/CatalogueFixture.h"

using fileactions::RenameOutcome;
using fileactions::RenameResult;

namespace {

struct RenameImageFileTest : support::CatalogueFixture {
    RenameImageFileTest() { support::writeFile(path(u"IMG_1.jpg"), "picture"); }

    QString path(QStringView name) const { return folder.filePath(name.toString()); }
    RenameOutcome rename(QStringView name) {
        return fileactions::renameImageFile(item->fileId(), name.toString(), database, folders);
    }

    /// On disk and in the catalogue.
    QStringList names() {
        return QDir(folder.path()).entryList(QDir::Files, QDir::Name) +
               support::rowsOf(database, u"select FileName from ImageFile"_s);
    }

    QTemporaryDir folder;
    support::KnownFolders folders{{{1, folder.path()}}};
    std::shared_ptr<PBImageFileItem> item = addImage({{u"FolderId"_s, 1}});
};

TEST_F(RenameImageFileTest, fileRowAndItemGetTheNameAlsoOneOfOtherCaseOrExtension) {
    for (const QString& name : {u"Ümläut 100%.jpg"_s, u"ümläut 100%.jpg"_s, u"plain"_s}) {
        EXPECT_EQ(rename(name).result, RenameResult::Renamed);
        EXPECT_EQ(names(), QStringList(2, name));
    }
    EXPECT_EQ(rename(u"plain").result, RenameResult::Unchanged);
    EXPECT_EQ(rename(u"").result, RenameResult::Unchanged);
}

TEST_F(RenameImageFileTest, whatCannotBeDoneIsToldAndChangesNothing) {
    support::writeFile(path(u"taken.jpg"), "another");
    for (const auto& [name, part] :
         {std::pair(u"taken.jpg"_s, u"“taken.jpg”"_s), std::pair(u"a/b.jpg"_s, u"/"_s),
          std::pair(u".."_s, u"/"_s), std::pair(u"."_s, u"/"_s), std::pair(u"a\0b"_s, u"/"_s),
          std::pair(QString(300, u'x'), u"too long for its disk"_s)}) {
        const RenameOutcome outcome = rename(name);
        EXPECT_EQ(outcome.result, RenameResult::Failed);
        EXPECT_TRUE(outcome.reason.contains(part)) << outcome.reason.toStdString();
    }
    EXPECT_EQ(names(), support::words("IMG_1.jpg taken.jpg IMG_1.jpg"));
    EXPECT_EQ(support::readFile(path(u"taken.jpg")), "another");
}

TEST(NameToGiveTest, anExtensionLeftOutIsKeptAndAnotherOneIsDoubted) {
    const auto given = [](const char* typed, const char* former = "IMG_1.jpg") {
        const fileactions::NameToGive name =
            fileactions::nameToGive(QLatin1StringView(typed), QLatin1StringView(former));
        const QString doubt = QString::number(static_cast<int>(name.doubt) + name.isHidden * 10);
        return u"%1 %2 %3"_s.arg(name.name, doubt, name.nameOfSameType);
    };
    const std::pair<const char*, const char16_t*> rows[] = {
        {"  Lisbon ", u"Lisbon.jpg 0 "},
        {"Trip 2019.05", u"Trip 2019.05.jpg 0 "},
        {"a.JPEG", u"a.JPEG 0 "}, // the same type
        {"a.png", u"a.png 1 a.jpg"},
        {"a.txt", u"a.txt 1 a.jpg"},
        {"a.", u"a. 2 a.jpg"},
        {".a", u".a.jpg 10 "},
        {".a.png", u".a.png 11 .a.jpg"},
        {"  ", u" 0 "},
        {"..", u".. 0 "}};
    for (const auto& [typed, expected] : rows)
        EXPECT_EQ(given(typed), QString::fromUtf16(expected));
    EXPECT_EQ(given("a.xyz", "b.xyz"), u"a.xyz 0 "_s);
    EXPECT_EQ(given(".b.jpg", ".a.jpg"), u".b.jpg 0 "_s) << "hidden as before";
    EXPECT_EQ(given(" a.jpg", " a.jpg"), u" a.jpg 0 "_s) << "as it was";
}

TEST_F(RenameImageFileTest, aCatalogueThatTakesNoNameLeavesTheFileItsOldOne) {
    const auto isRefused = [&] {
        EXPECT_EQ(rename(u"new.jpg").result, RenameResult::Failed);
        EXPECT_EQ(names(), support::words("IMG_1.jpg IMG_1.jpg"));
    };
    const auto execute = [&](const char* sql) {
        ASSERT_TRUE(database.executeUpdate(QString::fromLatin1(sql))) << sql;
    };
    execute("create trigger no before update on ImageFile begin select raise(abort, 'no'); end");
    isRefused();
    execute("drop trigger no");
    // By the commit: the file has its new name by then.
    execute("pragma foreign_keys = on");
    execute("create unique index Names on ImageFile (FileName)");
    execute("create table Named (Name text references ImageFile (FileName) "
            "deferrable initially deferred)");
    execute("insert into Named values ('IMG_1.jpg')");
    isRefused();
    execute("drop table Named");
    folders = support::KnownFolders({});
    EXPECT_FALSE(rename(u"new.jpg").reason.isEmpty()) << "its folder is away";
    ASSERT_TRUE(database.executeUpdate(u"delete from ImageFile"_s));
    EXPECT_EQ(rename(u"new.jpg").result, RenameResult::Gone);
}

} // namespace
