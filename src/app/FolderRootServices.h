#pragma once

#include "library/PBAliasManager.h"
#include "library/PBAliasResolver.h"
#include "library/PBFolderLister.h"
#include "library/PBPathHistory.h"
#include "library/SCEvents.h"
#include "platform/tasks/BoundedCalls.h"
#include "platform/tasks/OperationQueue.h"
#include "platform/volumes/TableMounter.h"
#include "platform/volumes/VolumeMounter.h"
#include "platform/volumes/VolumeWatcher.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <functional>

class FMDatabase;

/// The folder roots with all that finds, lists and watches over them. Main thread.
class FolderRootServices final : public QObject, private PBAliasServices {
    Q_OBJECT

public:
    struct Environment {
        FMDatabase& mainFileDb;
        FMDatabase& scanFileDb;
        platform::OperationQueue& scanOperationQueue;
        /// Told of a limit that keeps folders from being watched; any thread.
        std::function<void(const QString& limit)> watchLimitReached = {};
    };

    explicit FolderRootServices(const Environment& environment);
    ~FolderRootServices() override;

    /// Reads the roots from the catalogue and resolves them. They are not watched yet.
    void loadAlias();

    [[nodiscard]] PBAliasManager& aliasManager() { return _aliasManager; }
    [[nodiscard]] PBAliasResolver& aliasResolver() { return _aliasResolver; }
    [[nodiscard]] PBFolderLister& folderLister() { return _folderLister; }
    [[nodiscard]] PBPathHistory& pathHistory() { return _pathHistory; }

    /// Looks without waiting for the unmounted roots that were last seen at one of these paths or
    /// above it.
    void lookForRootsAt(const QStringList& paths);

    /// Compares in the background what should be watched with what is. `then` is called on the main
    /// thread when all of that is watched.
    void updateWatchPathsInBackground(std::function<void()> then = {});
    /// The stream over all mounted roots; its delegate is set by whoever takes the events.
    [[nodiscard]] SCEvents& scEvents() { return _scEvents; }
    /// For quitting, when no scan runs any more: what was opened for this run only goes from the
    /// catalogue.
    void removeOpenedRoots();
    /// Ends the watching; nothing starts it again. Waits for the background.
    void stopWatching();

    /// A disk has not answered yet.
    [[nodiscard]] bool isBusy() const { return _calls.hasWork(); }

Q_SIGNALS:
    /// Roots have left the catalogue with all their rows.
    void rootsWereRemoved();
    /// One of them left since its folder is nowhere on its disk, and not because the user said so.
    void rootIsGone(const PBAliasObject& aliasObject);
    /// The catalogue did not let go of roots: they are back. `askedFor` is the one that the user
    /// had removed; nullptr for none.
    void rootsCameBack(PBAliasObject* askedFor);
    void volumesDidMount(const PBAliasArray& changed);
    void volumesDidUnmount(const PBAliasArray& changed);
    void mountFailed(const PBAliasObject& aliasObject, const QString& error);

private:
    PBAliasResolution resolveAlias(
        const PBAliasObject& aliasObject, const PBAliasLook& look, QString* error) override;
    void willResolve(std::span<const std::shared_ptr<PBAliasObject>> roots) override;
    bool storeReservePath(qint64 aliasId, const QString& reservePath) override;
    bool storeBookmark(qint64 aliasId, const PBAliasBookmark& bookmark) override;
    [[nodiscard]] PBAliasResolver::OtherRoots otherRoots(const PBAliasObject& aliasObject) const;
    void aliasDidAnswer(qint64 aliasId, const PBAliasResolution& resolution);
    void removeRows(PBAliasArray roots, std::shared_ptr<PBAliasObject> askedFor);
    void removalDidEnd(const PBAliasArray& roots, PBAliasObject* askedFor, bool isRemoved);
    /// A disk was mounted: roots that are away may come on it.
    void awaitRootsOn(const QString& mountPoint);
    void updateWatchPaths();

    const Environment _environment;
    platform::BoundedCalls _calls;
    platform::DiskServiceMounter _diskMounter;
    platform::TableMounter _tableMounter;
    platform::ShareMounter _shareMounter;
    platform::AnyMounter _mounter{{&_diskMounter, &_tableMounter, &_shareMounter}};
    PBAliasResolver _aliasResolver;
    PBBoundedFolderLister _folderLister;
    PBAliasManager _aliasManager;
    PBPathHistory _pathHistory;
    platform::VolumeWatcher _volumeWatcher;

    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    SCEvents _scEvents;
    /// The same paths lead to other folders now.
    std::atomic<bool> _watchesAnew = false;
    /// Last: its work uses the members above.
    platform::OperationQueue _watchQueue{QStringLiteral("watch paths")};
};
