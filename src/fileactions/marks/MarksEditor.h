#pragma once

#include "fileactions/marks/MarksEdit.h"
#include "group/PBGroupItem.h"

#include <functional>

namespace fileactions {

/// Performs edits of marks: stores them, changes the items that are shown, and has them regrouped.
/// Main thread.
class MarksEditor {
public:
    struct Environment {
        /// To both files, of the main thread; nullptr where it can't be had.
        std::function<FMDatabase*()> connection;
        std::function<marks::RootPaths()> mountedRoots;
        std::function<const PBGroupItemArray&()> liveTree;
        /// Moves the items to their new place in the work tree, or out of it.
        std::function<void(PBImageFileList items)> regroup;
        /// Looks for photographs that are not in the live tree in the work tree; those that are
        /// found come back through `refresh`.
        std::function<void(std::vector<qint64> fileIds)> findInWorkTree;
        /// There are photographs whose files are to be looked at, and a change to be kept.
        std::function<void()> ledgerDidChange;
    };
    explicit MarksEditor(Environment environment) : _environment(std::move(environment)) {}

    struct Outcome {
        bool isStored = false;
        QString reason; ///< in SQLite's words, of a failure
        PerformedEdit performed;
    };
    Outcome perform(const MarksEdit& edit);

    /// Makes the items what the catalogue says of them, and has those that changed regrouped.
    void refresh(const PBImageFileList& items);

private:
    const Environment _environment;
};

} // namespace fileactions
