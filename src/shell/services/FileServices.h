#pragma once

#include "catalogue/marks/MarksLedger.h"
#include "group/PBGroupItem.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <vector>

class FMDatabase;

/// What commands on files need of the program, so that catalogue and display follow.
struct FileServices {
    /// A connection to catalogue and ledger for the calling thread; nullptr where there is none.
    std::function<std::unique_ptr<FMDatabase>()> connect;
    /// Any thread.
    std::function<marks::RootPaths()> mountedRoots;
    /// Rows are about to change behind the scans. Any thread.
    std::function<void()> rowsWillChange;
    /// These rows went elsewhere with their files, or out of the catalogue, or have their files
    /// again. Main thread.
    std::function<void(std::vector<qint64> fileIds)> rowsDidChange;
    /// Takes photographs out of the work tree, whose files are gone. Main thread.
    std::function<void(std::vector<PBGroupItemChain> chains)> removeFromWorkTree;
    /// Where files on their way are written down.
    QByteArray journalPath;
};
