#pragma once

#include "codec/PBImageImporterManager.h"
#include "group/GroupPublication.h"
#include "group/PlaceAddresses.h"
#include "image/PBBuildThumbOperation.h"
#include "library/PBAliasManager.h"
#include "platform/files/Spelling.h"
#include "platform/tasks/Mutex.h"
#include "scan/PBScanFinishedManager.h"
#include "scan/ReadAhead.h"
#include "scan/RewrittenFiles.h"
#include "scan/ScanFigures.h"

#include <functional>
#include <memory>

class MarksRestorer;

/// What scans need of the rest of the program. Everything outlives the scan queue.
struct ScanServices {
    const PBAliasManager& aliasManager;
    PBScanFinishedManager& scanFinishedManager;
    /// Taken around the insertion of a folder's row.
    platform::Mutex& insertFolderAliasLock;
    PBImageImporterManager& imageImporterManager;
    std::shared_ptr<BuildThumbServices> buildThumb;
    /// nullptr: no address is ever known.
    group::PlaceAddresses* places = nullptr;
    /// Called on the scan thread; bring their matter to the main thread, in default mode and in
    /// order, and don't wait.
    group::GroupPublisher publish;
    /// Whether what was published last is not on show yet: a tree that would only take its place is
    /// not copied. May be empty.
    std::function<bool()> waitsForDisplay = {};
    std::function<void(std::shared_ptr<const PBGroupItemArray> workTree)> scanFinished;
    /// nullptr: marks don't come back.
    MarksRestorer* marks = nullptr;
    /// nullptr: files are read one after the other.
    ReadAhead* readAhead = nullptr;
    /// Whether a file is new and still being written; it is left alone then. May be empty.
    std::function<bool(const QString& path)> isBeingWritten = {};
    /// A photograph, or a folder, was left out because its name is no text. May be empty.
    std::function<void(const QString& folder, const QString& name)> leftOutForItsName = {};
    /// How disks spell what is on them.
    const platform::NamesOnDisk* namesOnDisk = &platform::NamesOnDisk::real();
    /// Seconds since 1970.
    std::function<double()> now;
    /// What this run of the program did.
    ScanFigures& figures;
    /// Of the scan thread.
    std::shared_ptr<RewrittenFiles> rewritten = std::make_shared<RewrittenFiles>();
};
