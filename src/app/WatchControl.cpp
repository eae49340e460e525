#include "app/WatchControl.h"

#include "app/ScanPipeline.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>

namespace {

bool isMounted(const std::shared_ptr<PBAliasObject>& root) {
    return root->isMounted();
}

} // namespace

void WatchControl::pathWatcher(SCEvents& /*watcher*/, std::span<const SCEvent> eventArrayOccurred) {
    platform::assertMainThread();
    QStringList places;
    for (const SCEvent& event : eventArrayOccurred)
        places.append(event.eventPath());
    bool isRootLost = false;
    const QString formerlySelected = _environment.selectedPath();
    WatchedChanges changes = watchedChangesOfEvents(
        eventArrayOccurred, formerlySelected,
        {
            .aliasPathChanged =
                [this, &isRootLost](const QString& path, const QString& movedTo) {
                    const PBAliasArray roots =
                        _environment.aliasManager.aliasPathChanged(path, movedTo);
                    isRootLost = isRootLost || !std::ranges::all_of(roots, isMounted);
                    return !roots.empty();
                },
            .refreshChilden =
                [this](const QString& path, bool refreshChildren) {
                    return _environment.sourceTree.refreshInBackground(path, refreshChildren);
                },
            .isImageType =
                [this](const QString& uti) {
                    auto& importers = _environment.pipeline.imageImporterManager();
                    return importers.imageImporterClassForImageUTI(uti) != nullptr;
                },
            .showsSubFolders = _environment.browsing().recurseSubFolder,
        });
    // Its images on display become grey.
    changes.checkExist = changes.checkExist || isRootLost;
    if (changes.rootsChanged) {
        const QString selected = _environment.selectedPath();
        _environment.rootsChanged(!selected.isEmpty() && selected != formerlySelected);
        _environment.sourceTree.reloadCategoryItem();
    }
    if (changes.sidebarChanged) _environment.sourceTree.reloadData();
    attach(changes);
    _environment.lookForRoots(places);
}

void WatchControl::volumesChanged() {
    platform::assertMainThread();
    WatchedChanges changes;
    changes.checkExist = true;
    attach(changes);
}

void WatchControl::attach(const WatchedChanges& changes) {
    _environment.pipeline.factory().attachChanges(
        changes, _environment.pipeline.groupTreeDataSource().groupItemArray_work(),
        _environment.browsing());
}
