#include "fileactions/copy/CatalogueRows.h"

#include "catalogue/MarksSupport.h"
#include "fileactions/ScriptedFiles.h"
#include "platform/files/FileManager.h"

using fileactions::TransferPlan;
using Kind = TransferPlan::Kind;

namespace {

/// Two roots, "a" and "b", of one catalogue with a ledger, and a folder "out" that is in none.
struct CatalogueRowsTest : MarksTest {
    CatalogueRowsTest() {
        PBCatalogue catalogue(*both);
        for (const char* name : {"a", "b"}) {
            EXPECT_TRUE(QDir(disk.path()).mkdir(QLatin1StringView(name)));
            const qint64 root = catalogue.insertFolderAliasWithData("x", 0, at(name), qint64(0));
            roots.insert(root, at(name));
        }
        EXPECT_TRUE(QDir(disk.path()).mkdir(u"out"_s));
    }
    QString at(const QByteArray& name) const { return disk.filePath(QFile::decodeName(name)); }
    /// A photograph of a root with that many stars; answers its id.
    qint64 add(const QByteArray& name, int stars) {
        support::writeFile(at(name), name);
        const auto place = placeOf(at(platform::folderOfPath('/' + name).sliced(1)));
        PBCatalogue catalogue(*both);
        qint64 folder = catalogue.findFolderIdByAliasId(place->aliasId, std::nullopt).value_or(0);
        if (folder == 0) folder = catalogue.insertFolderWithAliasId(place->aliasId, {});
        const auto values = platform::FileManager::resourceValues(at(name));
        auto columns = support::entries("ImageWidth=40 ImageHeight=30");
        columns[u"FolderId"_s] = folder;
        columns[u"FileName"_s] = QFile::decodeName(platform::nameOfPath(name));
        columns[u"FileSize"_s] = values->fileSize;
        columns[u"ModificationDate"_s] = values->modificationDate;
        const qint64 id = catalogue.insertImageFileWithDictionary(columns);
        marks::MarksChange rated;
        rated.stars = stars;
        if (stars > 0) change({id}, rated);
        return id;
    }
    std::optional<fileactions::CatalogueRows::Place> placeOf(const QString& folder) const {
        for (auto root = roots.begin(); root != roots.end(); ++root) {
            if (folder == *root) return {{root.key(), {}}};
            if (folder.startsWith(*root + u'/'))
                return {{root.key(), folder.sliced(root->size() + 1)}};
        }
        return std::nullopt;
    }
    fileactions::CatalogueRows::Environment environment() {
        return {
            .connect = [this] { return marks::MarksLedger::connect(filesPath, marksPath); },
            .mountedRoots = [this] { return roots; },
            .placeOfFolder = [this](const QString& path) { return placeOf(path); },
            .rowsWillChange = [this] { ++told; }};
    }
    void transfer(Kind kind, const QByteArray& from, const QByteArray& folder, bool isDone = true) {
        prompts.answers = {{fileactions::FilePrompts::Answer::Replace, false}};
        fileactions::CatalogueRows rows(environment());
        const platform::NamesOnDisk names = files.names();
        fileactions::FileTransfer transfer(
            {.files = files,
             .temporaries = temporaries,
             .rows = rows,
             .prompts = prompts,
             .copyWord = u"copy"_s,
             .names = names});
        const auto result = transfer.run(
            fileactions::planTransfer(
                kind, {QFile::encodeName(at(from))}, QFile::encodeName(at(folder))),
            std::stop_token());
        EXPECT_EQ(result.files.size(), isDone ? 1U : 0U);
        changed = rows.changedRows();
    }
    /// "id path" of all rows of the catalogue.
    QString rows() {
        return support::rowsOf(
                   *both, u"select f.Id||' '||d.AliasId||'/'||ifnull(d.RelativePath||'/','')||"
                          "f.FileName from ImageFile f join Folder d on d.Id = f.FolderId "
                          "order by f.Id"_s)
            .join(u", ");
    }
    /// "stars path" of all rows of the ledger.
    QStringList ledger() {
        QStringList texts;
        marks::MarksLedger ledger(*both);
        const auto all = ledger.rows(roots);
        for (const auto& row : *all)
            texts +=
                u"%1 %2"_s.arg(row.marks.stars)
                    .arg(QDir(disk.path()).relativeFilePath(QFile::decodeName(row.trace.path())));
        return texts;
    }

    QTemporaryDir disk;
    support::FaultyFiles files;
    support::ScriptedPrompts prompts;
    fileactions::TemporaryFiles temporaries{files, {}};
    int told = 0;
    std::vector<qint64> changed; ///< by the last transfer
};

TEST_F(CatalogueRowsTest, aMovedPhotographKeepsRowAndMarksOverDisksRootsAndBeyond) {
    const qint64 id = add("a/x.jpg", 4);
    ASSERT_TRUE(QDir(disk.path()).mkdir(u"b/new"_s));
    for (const bool isOtherDisk : {false, true}) {
        files.otherDisk = isOtherDisk ? QFile::encodeName(at("b")) : QByteArray();
        transfer(Kind::Move, "a/x.jpg", "b/new");
        EXPECT_EQ(rows(), u"%1 2/new/x.jpg"_s.arg(id));
        EXPECT_EQ(ledger(), QStringList(u"4 b/new/x.jpg"_s));
        transfer(Kind::Move, "b/new/x.jpg", "a");
        EXPECT_EQ(rows(), u"%1 1/x.jpg"_s.arg(id));
    }
    EXPECT_GE(told, 4);
    EXPECT_EQ(changed, std::vector<qint64>{id});
    // Out of all roots, where the catalogue has nothing, and back.
    transfer(Kind::Move, "a/x.jpg", "out");
    EXPECT_EQ(rows(), QString());
    EXPECT_EQ(changed, std::vector<qint64>{id});
    EXPECT_EQ(ledger(), QStringList(u"4 out/x.jpg"_s));
    transfer(Kind::Move, "out/x.jpg", "b");
    EXPECT_EQ(ledger(), QStringList(u"4 b/x.jpg"_s));
    // One that comes back from the trash is shown again by its row.
    const qint64 another = add("a/y.jpg", 0);
    fileactions::CatalogueRows following(environment());
    following.returned(QFile::encodeName(at("a/y.jpg")));
    following.settle();
    EXPECT_EQ(following.changedRows(), std::vector<qint64>{another});
}

TEST_F(CatalogueRowsTest, whatIsWrittenOverTakesItsMarksAlongAndCopiesTakeNone) {
    const qint64 one = add("a/x.jpg", 4);
    add("b/x.jpg", 2);
    transfer(Kind::Move, "a/x.jpg", "b");
    EXPECT_EQ(rows(), u"%1 2/x.jpg"_s.arg(one));
    EXPECT_EQ(ledger(), QStringList(u"4 b/x.jpg"_s));
    const qint64 three = add("a/x.jpg", 0);
    transfer(Kind::Copy, "a/x.jpg", "b");
    EXPECT_EQ(rows(), u"%1 1/x.jpg"_s.arg(three));
    EXPECT_EQ(ledger(), QStringList());
    // Also where the move fails then, for the source can't go.
    add("b/x.jpg", 3);
    files.otherDisk = QFile::encodeName(at("b"));
    files.leaves = QFile::encodeName(at("a"));
    transfer(Kind::Move, "a/x.jpg", "b", false);
    EXPECT_EQ(ledger(), QStringList());
}

TEST_F(CatalogueRowsTest, aDiskThatTakesNoNoteOfCaseMixesNoMarksUp) {
    files.withoutCase = "/b";
    const qint64 moved = add("a/IMG.JPG", 4);
    const qint64 former = add("b/img.jpg", 2);
    transfer(Kind::Move, "a/IMG.JPG", "b");
    EXPECT_EQ(rows(), u"%1 2/img.jpg"_s.arg(moved));
    EXPECT_NE(moved, former);
    EXPECT_EQ(ledger(), QStringList(u"4 b/img.jpg"_s));
    EXPECT_EQ(QDir(at("b")).entryList(QDir::Files), QStringList(u"img.jpg"_s));
}

TEST_F(CatalogueRowsTest, aCatalogueThatIsLockedHoldsNoMoveUp) {
    const qint64 id = add("a/x.jpg", 4);
    FMDatabase other(filesPath);
    ASSERT_TRUE(other.open() && other.executeUpdate(u"begin exclusive"_s));
    transfer(Kind::Move, "a/x.jpg", "b");
    ASSERT_TRUE(other.executeUpdate(u"rollback"_s));
    EXPECT_EQ(rows(), u"%1 1/x.jpg"_s.arg(id)); // for the next scan to find
    EXPECT_TRUE(changed.empty());
    EXPECT_TRUE(QFile::exists(at("b/x.jpg")));
}

} // namespace
