#pragma once

#include "FMDB/FMDatabase.h"
#include "library/PBAliasManager.h"
#include "library/PBFolderLister.h"
#include "support/Rows.h"

/// Tells where roots are as a test says, instead of by the disk.
struct ToldAliasServices final : PBAliasServices {
    explicit ToldAliasServices(FMDatabase& db) : _db(db) {}

    [[nodiscard]] platform::Resolution
    resolveAlias(const PBAliasObject& aliasObject, bool mount, QString* error) override;
    bool storeReservePath(std::int64_t aliasId, const QString& reservePath) override;

    /// By the bytes that the tests take as bookmarks: a name for the folder.
    std::map<QByteArray, platform::Resolution> answers;
    int resolved = 0;

private:
    FMDatabase& _db;
};

/// Lists folders on disk at once, or keeps the answers back until the test lets them go.
struct StoppableLister final : PBFolderLister {
    [[nodiscard]] std::optional<QStringList>
    list(const QString& lane, const QString& folder, LateAnswer late) override;
    void letGo();

    bool isSlow = false;
    int listed = 0;

private:
    std::vector<std::function<void()>> _waiting;
};

/// A catalogue in memory with an alias manager over it.
struct LibraryTest : testing::Test {
    LibraryTest();
    ~LibraryTest() override;

    /// A mounted root at the path, added as the user would add it.
    std::shared_ptr<PBAliasObject> addRoot(
        const QString& path, std::uint64_t type = PBAliasObject::Local, std::uint64_t state = 0);
    std::int64_t addFolder(const PBAliasObject& root, const QString& relativePath);
    std::int64_t addImage(std::int64_t folderId, const QString& name);
    /// The rows of the statement, columns joined with "|".
    QStringList rows(const QString& sql) { return support::rowsOf(db, sql); }
    void
    answer(const PBAliasObject& root, platform::Resolution::Outcome outcome, QString path = {});

    /// A folder on disk below a temporary one; made when asked for.
    QString make(QStringView below);
    QString path(QStringView below) const;

    FMDatabase db;
    ToldAliasServices services{db};
    std::vector<std::int64_t> removedThumbnails;
    PBAliasManager manager;

private:
    QTemporaryDir _folder;
};
