#include "fileactions/copy/CatalogueRows.h"

#include "catalogue/MarksSupport.h"
#include "fileactions/ScriptedFiles.h"
#include "platform/files/FileManager.h"

using Kind = fileactions::TransferPlan::Kind;

namespace {

/// Two roots, "a" and "b", of one catalogue with a ledger, and a folder "out" that is in none.
struct CatalogueRowsTest : MarksTest, support::Transfers {
    CatalogueRowsTest() {
        PBCatalogue catalogue(*both);
        for (const char* name : {"a", "b"}) {
            const qint64 root = catalogue.insertFolderAliasWithData("x", 0, at(name), qint64(0));
            roots.insert(root, at(name));
        }
        EXPECT_TRUE(QDir(folder.path()).mkdir(u"out"_s));
    }
    /// A photograph of a root with that many stars; answers its id.
    qint64 add(const QByteArray& name, int stars) {
        put(name, name);
        const auto place = placeOf(at(platform::folderOfPath('/' + name).sliced(1)));
        PBCatalogue catalogue(*both);
        auto parent = catalogue.findFolderIdByAliasId(place->aliasId, std::nullopt).value_or(0);
        if (parent == 0) parent = catalogue.insertFolderWithAliasId(place->aliasId, {});
        const auto values = platform::FileManager::resourceValues(at(name));
        auto columns = support::entries("ImageWidth=40 ImageHeight=30");
        columns[u"FolderId"_s] = parent;
        columns[u"FileName"_s] = QFile::decodeName(platform::nameOfPath(name));
        columns[u"FileSize"_s] = values->fileSize;
        columns[u"ModificationDate"_s] = values->modificationDate;
        const qint64 id = catalogue.insertImageFileWithDictionary(columns);
        if (stars > 0) change({id}, {.stars = stars, .flag = {}, .tags = {}, .rotation = {}});
        return id;
    }
    std::optional<fileactions::CatalogueRows::Place> placeOf(const QString& place) const {
        for (auto root = roots.begin(); root != roots.end(); ++root)
            if ((place + u'/').startsWith(*root + u'/'))
                return {{root.key(), place.mid(root->size() + 1)}};
        return std::nullopt;
    }
    fileactions::CatalogueRows::Environment environment() {
        return {
            .connect = [this] { return marks::MarksLedger::connect(filesPath, marksPath); },
            .mountedRoots = [this] { return roots; },
            .placeOfFolder = [this](const QString& path) { return placeOf(path); },
            .rowsWillChange = [this] { ++told; }};
    }
    void transfer(Kind kind, const QByteArray& from, const QByteArray& into, bool isDone = true) {
        prompts.answers = {{fileactions::FilePrompts::Answer::Replace, false}};
        fileactions::CatalogueRows rows(environment());
        following = &rows;
        EXPECT_EQ(run(plan(kind, {from}, into)).files.size(), isDone ? 1U : 0U);
        changed = rows.changedRows();
    }
    /// "id root/path" of the rows of the catalogue, and "stars path" of those of the ledger.
    QString known() {
        const auto marked =
            support::listed(*marks::MarksLedger(*both).rows(roots), [this](const auto& row) {
                const QString place = QFile::decodeName(row.trace.path());
                return QString::number(row.marks.stars) + u' ' +
                       place.mid(folder.path().size() + 1);
            });
        return rows(u"select f.Id||' '||d.AliasId||'/'||ifnull(d.RelativePath||'/','')||f.FileName "
                    "from ImageFile f join Folder d on d.Id = f.FolderId order by f.Id"_s)
                   .join(u", ") +
               u" marked "_s + marked.join(u", ");
    }

    int told = 0;
    std::vector<qint64> changed; ///< by the last transfer
};

TEST_F(CatalogueRowsTest, aMovedPhotographKeepsRowAndMarksOverDisksRootsAndBeyond) {
    const qint64 id = add("a/x.jpg", 4);
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"b/new"_s));
    for (const bool isOtherDisk : {false, true}) {
        files.otherDisk = isOtherDisk ? path("b") : QByteArray();
        transfer(Kind::Move, "a/x.jpg", "b/new");
        EXPECT_EQ(known(), u"%1 2/new/x.jpg marked 4 b/new/x.jpg"_s.arg(id));
        transfer(Kind::Move, "b/new/x.jpg", "a");
        EXPECT_EQ(known(), u"%1 1/x.jpg marked 4 a/x.jpg"_s.arg(id));
    }
    EXPECT_GE(told, 4);
    EXPECT_EQ(changed, std::vector<qint64>{id});
    // Out of all roots, where the catalogue has nothing, and back.
    transfer(Kind::Move, "a/x.jpg", "out");
    EXPECT_EQ(known(), u" marked 4 out/x.jpg"_s);
    EXPECT_EQ(changed, std::vector<qint64>{id});
    transfer(Kind::Move, "out/x.jpg", "b");
    EXPECT_EQ(known(), u" marked 4 b/x.jpg"_s);
    // One that comes back from the trash is shown again by its row.
    const qint64 another = add("a/y.jpg", 0);
    fileactions::CatalogueRows rows(environment());
    rows.returned(path("a/y.jpg"));
    rows.settle();
    EXPECT_EQ(rows.changedRows(), std::vector<qint64>{another});
}

TEST_F(CatalogueRowsTest, whatIsWrittenOverTakesItsMarksAlongAndCopiesTakeNone) {
    const qint64 one = add("a/x.jpg", 4);
    add("b/x.jpg", 2);
    transfer(Kind::Move, "a/x.jpg", "b");
    EXPECT_EQ(known(), u"%1 2/x.jpg marked 4 b/x.jpg"_s.arg(one));
    const qint64 three = add("a/x.jpg", 0);
    transfer(Kind::Copy, "a/x.jpg", "b");
    EXPECT_EQ(known(), u"%1 1/x.jpg marked "_s.arg(three));
    // Also where the move fails then, for the source can't go.
    add("b/x.jpg", 3);
    files.otherDisk = path("b");
    files.leaves = path("a");
    transfer(Kind::Move, "a/x.jpg", "b", false);
    EXPECT_EQ(known(), u"%1 1/x.jpg marked "_s.arg(three));
}

TEST_F(CatalogueRowsTest, aDiskThatTakesNoNoteOfCaseMixesNoMarksUp) {
    files.withoutCase = "/b";
    const qint64 moved = add("a/IMG.JPG", 4);
    add("b/img.jpg", 2);
    transfer(Kind::Move, "a/IMG.JPG", "b");
    EXPECT_EQ(known(), u"%1 2/img.jpg marked 4 b/img.jpg"_s.arg(moved));
    EXPECT_EQ(names(u"b"_s), QStringList(u"img.jpg"_s));
}

TEST_F(CatalogueRowsTest, aCatalogueThatIsLockedHoldsNoMoveUp) {
    const qint64 id = add("a/x.jpg", 4);
    FMDatabase other(filesPath);
    ASSERT_TRUE(other.open() && other.executeUpdate(u"begin exclusive"_s));
    transfer(Kind::Move, "a/x.jpg", "b");
    ASSERT_TRUE(other.executeUpdate(u"rollback"_s));
    EXPECT_EQ(known(), u"%1 1/x.jpg marked 4 a/x.jpg"_s.arg(id)); // for the next scan to find
    EXPECT_TRUE(changed.empty());
    EXPECT_TRUE(QFile::exists(at("b/x.jpg")));
}

} // namespace
