#include "app/WatchControl.h"

#include "app/ScanPipeline.h"
#include "library/PBSourceTreeDataSource.h"

void WatchControl::pathWatcher(SCEvents& /*watcher*/, std::span<const SCEvent> eventArrayOccurred) {
    const WatchedChanges changes = watchedChangesOfEvents(
        eventArrayOccurred, _environment.selectedPath(),
        {
            .aliasPathChanged =
                [this](const QString& path) {
                    return !_environment.aliasManager.aliasPathChanged(path).empty();
                },
            .refreshChilden =
                [this](const QString& path, bool refreshChildren) {
                    return _environment.sourceTree.refreshChilden(path, refreshChildren);
                },
            .isImageType =
                [this](const QString& uti) {
                    auto& importers = _environment.pipeline.imageImporterManager();
                    return importers.imageImporterClassForImageUTI(uti) != nullptr;
                },
        });
    if (changes.rootsChanged) {
        _environment.rootsChanged();
        _environment.sourceTree.reloadCategoryItem();
    }
    if (changes.sidebarChanged) _environment.sourceTree.reloadData();
    attach(changes);
}

void WatchControl::volumesChanged() {
    WatchedChanges changes;
    changes.checkExist = true;
    attach(changes);
}

void WatchControl::attach(const WatchedChanges& changes) {
    _environment.pipeline.factory().attachChanges(
        changes, _environment.pipeline.groupTreeDataSource().groupItemArray_work(),
        _environment.browsing());
}
