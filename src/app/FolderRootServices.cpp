#include "app/FolderRootServices.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveAliasOperation.h"
#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QDBusConnection>

#include <algorithm>
#include <chrono>
#include <utility>

using platform::MainLoop;

namespace {

/// For those who look at the catalogue where nobody waits.
constexpr std::chrono::seconds longestWait(5);
/// For the catalogue, when the user has closed the window.
constexpr std::chrono::milliseconds longestFarewell(300);

} // namespace

FolderRootServices::FolderRootServices(const Environment& environment)
    : _environment(environment), _diskMounter(&QDBusConnection::systemBus),
      _aliasResolver(_calls, &_mounter), _folderLister(_calls),
      _aliasManager(
          {environment.mainFileDb, *this,
           [this](PBAliasArray roots, std::shared_ptr<PBAliasObject> askedFor) {
               removeRows(std::move(roots), std::move(askedFor));
           }}),
      _volumeWatcher(platform::VolumeSources().mountInfo),
      _scEvents({.limitReached = environment.watchLimitReached}) {
    using platform::VolumeWatcher;
    connect(&_volumeWatcher, &VolumeWatcher::volumeDidMount, this, [this](const QString& path) {
        if (const auto changed = _aliasManager.volumDidMount(path); !changed.empty()) {
            Q_EMIT volumesDidMount(changed);
        }
        awaitRootsOn(path);
    });
    connect(&_volumeWatcher, &VolumeWatcher::volumeDidUnmount, this, [this](const QString& path) {
        if (const auto changed = _aliasManager.volumDidUnmount(path); !changed.empty()) {
            Q_EMIT volumesDidUnmount(changed);
        }
    });
    _aliasResolver.setLateAnswerHandler(
        [this](qint64 aliasId, const PBAliasResolution& resolution) {
            aliasDidAnswer(aliasId, resolution);
        });
    _aliasResolver.setNamesSource(
        [file = environment.mainFileDb.databasePath()](
            qint64 aliasId) -> std::optional<std::vector<CataloguedName>> {
            FMDatabase db(file);
            db.setLongestWait(longestWait);
            return db.open() ? cataloguedNames(db, aliasId) : std::nullopt;
        });
    _aliasResolver.setMountHandler([this](qint64 aliasId, const QString& error) {
        const auto root = _aliasManager.findAliasObjectById(aliasId);
        if (!root) return;
        if (!error.isEmpty()) {
            Q_EMIT mountFailed(*root, error);
        } else if (!root->isMounted()) {
            // The table of mounts tells nothing of a server below a mount point that stays.
            _aliasResolver.resolveLater(*root, otherRoots(*root));
        }
    });
}

FolderRootServices::~FolderRootServices() = default;

void FolderRootServices::loadAlias() {
    platform::assertMainThread();
    _aliasManager.loadAlias();
}

PBAliasResolver::OtherRoots FolderRootServices::otherRoots(const PBAliasObject& aliasObject) const {
    PBAliasResolver::OtherRoots roots;
    for (const auto& root : _aliasManager.aliasArray()) {
        if (root.get() == &aliasObject) continue;
        const QString path = root->path();
        if (!path.isEmpty()) {
            roots.mounted.append(path);
        } else if (const QString reservePath = root->reservePath(); !reservePath.isEmpty()) {
            roots.away.append(reservePath);
        }
    }
    return roots;
}

void FolderRootServices::willResolve(std::span<const std::shared_ptr<PBAliasObject>> roots) {
    for (const auto& root : roots)
        if (!root->isMounted()) _aliasResolver.beginToResolve(*root, otherRoots(*root));
}

PBAliasResolution FolderRootServices::resolveAlias(
    const PBAliasObject& aliasObject, const PBAliasLook& look, QString* error) {
    return _aliasResolver.resolve(aliasObject, look, otherRoots(aliasObject), error);
}

void FolderRootServices::lookForRootsAt(const QStringList& paths) {
    platform::assertMainThread();
    for (const auto& root : _aliasManager.aliasArray()) {
        const QString place = root->reservePath();
        if (root->isMounted() || place.isEmpty()) continue;
        const bool isConcerned = std::ranges::any_of(paths, [&](const QString& path) {
            return path == place || PBUtilities::isParentOfPath(place, path);
        });
        if (isConcerned) _aliasResolver.resolveLater(*root, otherRoots(*root));
    }
}

bool FolderRootServices::storeReservePath(qint64 aliasId, const QString& reservePath) {
    return PBCatalogue(_environment.mainFileDb)
        .updateFolderAliasWithIdReservePath(aliasId, reservePath);
}

bool FolderRootServices::storeBookmark(qint64 aliasId, const PBAliasBookmark& bookmark) {
    return PBCatalogue(_environment.mainFileDb)
        .updateFolderAliasWithIdData(aliasId, bookmark.data, static_cast<int>(bookmark.type));
}

void FolderRootServices::aliasDidAnswer(qint64 aliasId, const PBAliasResolution& resolution) {
    platform::assertMainThread();
    const auto root = _aliasManager.findAliasObjectById(aliasId);
    if (!root) return;
    const PBAliasArray changed = _aliasManager.aliasDidAnswer(*root, resolution);
    if (changed.empty()) return;
    if (root->isMounted()) {
        Q_EMIT volumesDidMount(changed);
    } else {
        Q_EMIT volumesDidUnmount(changed);
    }
}

void FolderRootServices::removeRows(PBAliasArray roots, std::shared_ptr<PBAliasObject> askedFor) {
    PBRemoveAliasOperation::Roots removed;
    for (const auto& root : roots)
        removed.aliasIds.push_back(root->aliasId());
    if (askedFor) removed.askedFor = askedFor->aliasId();
    const bool isLeftOpened = !roots.empty() && !askedFor && OpenedRoots::isOpened(*roots.front());
    const auto ended = [this, alive = std::weak_ptr(_alive), roots = std::move(roots),
                        askedFor = std::move(askedFor)](bool isRemoved) {
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(MainLoop::Mode::Common, [this, alive, roots, askedFor, isRemoved] {
            if (!alive.expired()) removalDidEnd(roots, askedFor.get(), isRemoved);
        });
    };
    // On the scan queue: no scan that knows the roots comes behind it. Behind those that wait: what
    // the user looks at next comes first. What an earlier run left opened goes before all scans:
    // the same photographs may be opened again.
    const auto operation = std::make_shared<PBRemoveAliasOperation>(
        std::move(removed), _environment.scanFileDb, ended);
    if (!isLeftOpened) operation->setQueuePriority(platform::QueuePriority::VeryLow);
    _environment.scanOperationQueue.addOperation(operation);
}

void FolderRootServices::awaitRootsOn(const QString& mountPoint) {
    // What is watched of their places lies under the new disk now.
    const QStringList awaited = _aliasManager.awaitedPaths();
    const bool isConcerned = std::ranges::any_of(awaited, [&](const QString& path) {
        return PBUtilities::comparePath(mountPoint, path) >= 0;
    });
    if (!isConcerned) return;
    _watchesAnew = true;
    updateWatchPathsInBackground();
}

void FolderRootServices::removalDidEnd(
    const PBAliasArray& roots, PBAliasObject* askedFor, bool isRemoved) {
    platform::assertMainThread();
    if (isRemoved) {
        Q_EMIT rootsWereRemoved();
        for (const auto& root : roots) {
            if (root.get() != askedFor && root->isGone()) Q_EMIT rootIsGone(*root);
        }
        return;
    }
    _aliasManager.rootsWereNotRemoved(roots, askedFor);
    Q_EMIT rootsCameBack(askedFor);
}

void FolderRootServices::updateWatchPathsInBackground(std::function<void()> then) {
    platform::assertMainThread();
    _watchQueue.addOperation([this, alive = std::weak_ptr(_alive), then = std::move(then)] {
        updateWatchPaths();
        MainLoop* loop = then ? MainLoop::instance() : nullptr;
        if (!loop) return;
        loop->post(MainLoop::Mode::Common, [alive, then] {
            if (!alive.expired()) then();
        });
    });
}

void FolderRootServices::updateWatchPaths() {
    const QStringList wanted = _aliasManager.getMonitorPathArray();
    const QStringList awaited = _aliasManager.awaitedPaths();
    const QStringList flat = OpenedRoots::paths(_aliasManager);
    if (!_watchesAnew.exchange(false) &&
        PBUtilities::isEqualPathArray(wanted, _scEvents.watchedPaths()) &&
        PBUtilities::isEqualPathArray(awaited, _scEvents.awaitedPaths()) &&
        PBUtilities::isEqualPathArray(flat, _scEvents.flatPaths()))
        return;
    _scEvents.stopWatchingPaths();
    _scEvents.startWatchingPaths(wanted, awaited, flat);
}

void FolderRootServices::removeOpenedRoots() {
    platform::assertMainThread();
    PBRemoveAliasOperation::Roots roots;
    for (const auto& root : OpenedRoots::of(_aliasManager))
        roots.aliasIds.push_back(root->aliasId());
    if (roots.aliasIds.empty()) return;
    // Where the catalogue does not take it now, the next start does it.
    static_cast<void>(
        PBRemoveAliasOperation::remove(roots, _environment.scanFileDb, longestFarewell));
}

void FolderRootServices::stopWatching() {
    platform::assertMainThread();
    _watchQueue.cancelAllOperations();
    _watchQueue.waitUntilAllOperationsAreFinished();
    _scEvents.setDelegate(nullptr);
    _scEvents.stopWatchingPaths();
}
