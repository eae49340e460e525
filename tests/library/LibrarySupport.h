#pragma once

#include "catalogue/PBRemoveAliasOperation.h"
#include "library/PBAliasManager.h"
#include "library/PBFolderLister.h"
#include "support/FolderTest.h"
#include "support/Rows.h"

/// Tells where roots are as a test says, instead of by the disk.
struct ToldAliasServices final : PBAliasServices {
    explicit ToldAliasServices(FMDatabase& db) : _db(db) {}

    PBAliasResolution resolveAlias(
        const PBAliasObject& aliasObject, const PBAliasLook& look, QString* error) override {
        ++resolved;
        last = look;
        const auto told = answers.find(aliasObject.aliasData());
        if (told == answers.end())
            return {PBAliasResolution::Outcome::Found, aliasObject.reservePath()};
        if (error && told->second.outcome == PBAliasResolution::Outcome::VolumeAbsent)
            *error = u"no disk"_s;
        return told->second;
    }
    bool storeReservePath(qint64 aliasId, const QString& reservePath) override {
        return PBCatalogue(_db).updateFolderAliasWithIdReservePath(aliasId, reservePath);
    }

    bool storeBookmark(qint64 aliasId, const PBAliasBookmark& bookmark) override {
        return PBCatalogue(_db).updateFolderAliasWithIdData(
            aliasId, bookmark.data, static_cast<int>(bookmark.type));
    }

    /// By the bytes that the tests take as bookmarks: a name for the folder. Others are where they
    /// were.
    std::map<QByteArray, PBAliasResolution> answers;
    int resolved = 0;
    PBAliasLook last; ///< how the last question was asked

private:
    FMDatabase& _db;
};

/// Lists folders on disk at once, or keeps the answers back until the test lets them go.
struct StoppableLister final : PBFolderLister {
    std::optional<Subfolders>
    list(const QString& lane, const QString& folder, LateAnswer late) override {
        ++listed;
        lastLane = lane;
        if (!isSlow) return subfoldersOf(folder);
        waitingFor.append(waits() ? u"briefly"_s : u"in the background"_s);
        _waiting.emplace_back([folder, late = std::move(late)] { late(subfoldersOf(folder)); });
        return std::nullopt;
    }
    void letGo() {
        for (const auto& answer : std::exchange(_waiting, {}))
            answer();
    }

    bool isSlow = false;
    int listed = 0;
    QString lastLane;
    QStringList waitingFor; // of the slow ones

private:
    std::vector<std::function<void()>> _waiting;
};

/// A catalogue in memory with an alias manager over it.
struct LibraryTest : support::FolderTest {
    LibraryTest() { EXPECT_TRUE(catalogue.checkTables_FilesDb()); }

    /// A mounted root at the path, added as the user would add it.
    std::shared_ptr<PBAliasObject> addRoot(
        const QString& path, std::uint64_t type = PBAliasObject::Local, std::uint64_t state = 0) {
        const QByteArray data = path.toUtf8();
        services.answers[data] = {PBAliasResolution::Outcome::Found, path};
        const auto aliasId = catalogue.insertFolderAliasWithData(
            data, static_cast<int>(type), path, static_cast<qint64>(state));
        const auto root = PBAliasObject::aliasObjectWithId(
            aliasId, data, QUrl::fromLocalFile(path), path, state, type);
        manager.addAliasObject(root);
        return root;
    }
    std::shared_ptr<PBAliasObject> addZombie(const QString& path) {
        return addRoot(path, PBAliasObject::Local, PBAliasObject::zombieState);
    }
    void answer(const PBAliasObject& root, PBAliasResolution::Outcome outcome, QString path = {}) {
        services.answers[root.aliasData()] = {outcome, std::move(path)};
    }
    void makeAbsent(const PBAliasObject& root) {
        answer(root, PBAliasResolution::Outcome::VolumeAbsent);
        manager.volumDidUnmount({});
    }

    void makeAll(const char* below) {
        for (const QString& folder : support::words(below))
            make(folder);
    }

    support::Database db;
    PBCatalogue catalogue{db};
    ToldAliasServices services{db};
    /// Does what was to be done in the background; answers what came back with `askedFor`.
    std::vector<std::shared_ptr<PBAliasObject>> finishRemovals() {
        std::vector<std::shared_ptr<PBAliasObject>> cameBack;
        for (const auto& [roots, askedFor] : std::exchange(_removals, {})) {
            PBRemoveAliasOperation::Roots removed{{}, askedFor ? askedFor->aliasId() : 0};
            for (const auto& root : roots)
                removed.aliasIds.push_back(root->aliasId());
            if (PBRemoveAliasOperation::remove(removed, db)) continue;
            manager.rootsWereNotRemoved(roots, askedFor.get());
            cameBack.push_back(askedFor);
        }
        return cameBack;
    }
    PBAliasManager manager{
        {db, services, [this](PBAliasArray roots, std::shared_ptr<PBAliasObject> askedFor) {
             _removals.emplace_back(std::move(roots), std::move(askedFor));
         }}};

private:
    std::vector<std::pair<PBAliasArray, std::shared_ptr<PBAliasObject>>> _removals;
};
