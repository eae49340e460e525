#include "app/FolderRootServices.h"

#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "core/Paths.h"
#include "platform/work/MainLoop.h"
#include "platform/work/MainThread.h"

#include <QDBusConnection>

#include <utility>

using platform::MainLoop;

FolderRootServices::FolderRootServices(const Environment& environment)
    : _environment(environment), _calls([](std::function<void()> function) {
          if (auto* loop = MainLoop::instance()) {
              loop->post(MainLoop::Mode::Common, std::move(function));
          }
      }),
      _mounter(&QDBusConnection::systemBus), _aliasResolver(_calls, &_mounter),
      _folderLister(_calls),
      _aliasManager(
          {environment.mainFileDb, *this,
           [this](std::vector<qint64> fileIds) { removeThumbnails(std::move(fileIds)); }}),
      _volumeWatcher(platform::VolumeSources().mountInfo),
      _scEvents({.limitReached = environment.watchLimitReached}) {
    using platform::VolumeWatcher;
    connect(&_volumeWatcher, &VolumeWatcher::volumeDidMount, this, [this](const QString& path) {
        if (const auto changed = _aliasManager.volumDidMount(path); !changed.empty()) {
            Q_EMIT volumesDidMount(changed);
        }
    });
    connect(&_volumeWatcher, &VolumeWatcher::volumeDidUnmount, this, [this](const QString& path) {
        if (const auto changed = _aliasManager.volumDidUnmount(path); !changed.empty()) {
            Q_EMIT volumesDidUnmount(changed);
        }
    });
    _aliasResolver.setLateAnswerHandler(
        [this](qint64 aliasId, const platform::Resolution& resolution) {
            aliasDidAnswer(aliasId, resolution);
        });
    _aliasResolver.setMountFailureHandler([this](qint64 aliasId, const QString& error) {
        if (const auto root = _aliasManager.findAliasObjectById(aliasId)) {
            Q_EMIT mountFailed(*root, error);
        }
    });
}

FolderRootServices::~FolderRootServices() = default;

void FolderRootServices::loadAlias() {
    platform::assertMainThread();
    _aliasManager.loadAlias();
}

platform::Resolution
FolderRootServices::resolveAlias(const PBAliasObject& aliasObject, bool mount, QString* error) {
    QStringList otherRoots;
    for (const auto& root : _aliasManager.aliasArray()) {
        const QString path = root->isMounted() ? root->path() : root->reservePath();
        if (root.get() != &aliasObject && !path.isEmpty()) otherRoots.append(path);
    }
    return _aliasResolver.resolve(aliasObject, mount, otherRoots, error);
}

bool FolderRootServices::storeReservePath(qint64 aliasId, const QString& reservePath) {
    return PBCatalogue(_environment.mainFileDb)
        .updateFolderAliasWithIdReservePath(aliasId, reservePath);
}

void FolderRootServices::aliasDidAnswer(qint64 aliasId, const platform::Resolution& resolution) {
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

void FolderRootServices::removeThumbnails(std::vector<qint64> fileIds) {
    _environment.buildThumbOperationQueue.addOperation(
        std::make_shared<PBRemoveThumbOperation>(std::move(fileIds), _environment.buildThumbDb));
}

void FolderRootServices::updateWatchPathsInBackground() {
    platform::assertMainThread();
    _watchQueue.addOperation([this] { updateWatchPaths(); });
}

void FolderRootServices::updateWatchPaths() {
    const QStringList wanted = _aliasManager.getMonitorPathArray();
    if (PBUtilities::isEqualPathArray(wanted, _scEvents.watchedPaths())) return;
    _scEvents.stopWatchingPaths();
    _scEvents.startWatchingPaths(wanted);
}

void FolderRootServices::stopWatching() {
    platform::assertMainThread();
    _watchQueue.cancelAllOperations();
    _watchQueue.waitUntilAllOperationsAreFinished();
    _scEvents.setDelegate(nullptr);
    _scEvents.stopWatchingPaths();
}
