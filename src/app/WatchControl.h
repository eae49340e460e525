#pragma once

#include "library/PBAliasManager.h"
#include "library/SCEvents.h"
#include "library/WatchedChanges.h"
#include "scan/ScanFactory.h"

#include <functional>

class PBSourceTreeDataSource;
class ScanPipeline;

/// Brings display and sidebar in step with what happens on disk while the program runs: takes the
/// batches of the event stream and schedules the work that follows from them. Main thread.
class WatchControl final : public SCEventListenerProtocol {
public:
    /// All outlive this object, as the event stream does not.
    struct Environment {
        PBAliasManager& aliasManager;
        PBSourceTreeDataSource& sourceTree;
        ScanPipeline& pipeline;
        /// Empty when no folder is selected.
        std::function<QString()> selectedPath;
        std::function<ScanBrowsing()> browsing;
        /// Folder roots moved, came or went; perhaps the one in which the selected folder lies
        /// moved along with it.
        std::function<void(bool isSelectionMoved)> rootsChanged;
        /// Something happened at these places: roots that are away may have come there.
        std::function<void(const QStringList& paths)> lookForRoots;
    };

    explicit WatchControl(Environment environment) : _environment(std::move(environment)) {}

    void pathWatcher(SCEvents& watcher, std::span<const SCEvent> eventArrayOccurred) override;
    /// Disks came or went: photographs on display may have become available, or not.
    void volumesChanged();

private:
    void attach(const WatchedChanges& changes);

    const Environment _environment;
};
