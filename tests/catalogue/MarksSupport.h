#pragma once

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/marks/MarksFile.h"
#include "support/Rows.h"

/// An edit as the user makes it: of both files, in one transaction.
inline void changeMarks(
    FMDatabase& both, const marks::RootPaths& roots, const std::vector<qint64>& ids,
    const marks::MarksChange& change) {
    FMTransaction transaction(both);
    marks::MarksLedger ledger(both);
    EXPECT_TRUE(marks::bindLedger(both, roots) && ledger.changeCatalogue(ids, change));
    EXPECT_TRUE(ledger.takeFromCatalogue(ids, roots) && ledger.countEdit());
    EXPECT_TRUE(transaction.commit());
}

/// A connection to both, of a test that takes no power away.
inline std::unique_ptr<FMDatabase> connectToBoth(const QString& files, const QString& ledger) {
    auto both = marks::MarksLedger::connect(files, ledger);
    EXPECT_TRUE(both && both->executeUpdate(u"pragma synchronous = off"_s));
    return both;
}

/// A catalogue and a ledger in a folder, and a connection to both.
struct MarksTest : testing::Test {
    MarksTest() {
        open();
        EXPECT_TRUE(both->executeUpdate(u"pragma main.user_version = 77"_s));
    }

    /// Anew, after something happened to the files.
    void open() {
        both.reset();
        EXPECT_EQ(marks::settleLedger(marksPath, snapshots), QString());
        support::Database files(filesPath);
        EXPECT_TRUE(PBCatalogue(files).checkTables_FilesDb() && files.close());
        both = connectToBoth(filesPath, marksPath);
    }
    /// A photograph in the root "/pictures"; answers its id.
    qint64 addPhotograph(const QString& name, int orientation = 0) {
        PBCatalogue catalogue(*both);
        if (folderId == 0) {
            const auto root = catalogue.insertFolderAliasWithData("b", 0, u"/pictures"_s, 0);
            folderId = catalogue.insertFolderWithAliasId(root, u"trip"_s);
            roots.insert(root, u"/pictures"_s);
        }
        auto columns = support::entries("ModificationDate=12345.678 ImageWidth=40 ImageHeight=30");
        columns[u"FolderId"_s] = folderId;
        columns[u"FileName"_s] = name;
        columns[u"FileSize"_s] = 1000 + name.size();
        columns[u"RotateAngle"_s] = orientation == 6 ? -90.0 : 0.0;
        const qint64 id = catalogue.insertImageFileWithDictionary(columns);
        catalogue.insertTiffWithImageFileId(
            id, {{u"Orientation"_s, orientation}, {u"Make"_s, u"Maker"_s}});
        return id;
    }
    void change(const std::vector<qint64>& ids, const marks::MarksChange& change) {
        changeMarks(*both, roots, ids, change);
    }
    bool bind() {
        FMTransaction transaction(*both);
        return marks::bindLedger(*both, roots) && transaction.commit();
    }
    QStringList rows(const QString& sql) { return support::rowsOf(*both, sql); }
    QStringList inLedger() {
        return rows(u"select ifnull(FileId,'-'),cast(RelativePath as text),Stars,Flag,Tags,"
                    "ifnull(Rotation,'-') from Marks order by Id"_s);
    }
    QStringList inCatalogue() {
        return rows(u"select ifnull(FileStars,0),ifnull(FileFlag,0),ifnull(Tag,''),"
                    "cast(RotateAngle as integer) from ImageFile order by Id"_s);
    }

    QTemporaryDir temporary;
    const QString filesPath = temporary.filePath(u"files.db"_s);
    const QString marksPath = temporary.filePath(u"marks.db"_s);
    const QString snapshots = temporary.filePath(u"snapshots"_s);
    std::unique_ptr<FMDatabase> both;
    marks::RootPaths roots;
    qint64 folderId = 0;
};
