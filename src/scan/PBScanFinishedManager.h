#pragma once

#include "library/PBAliasObject.h"
#include "platform/tasks/Mutex.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

/// Names one folder: a folder root and the path below it, absent for the root itself.
class PBScanFinishedObject {
public:
    PBScanFinishedObject(
        std::shared_ptr<const PBAliasObject> aliasObject, std::optional<QString> relativePath)
        : _aliasObject(std::move(aliasObject)), _relativePath(std::move(relativePath)) {}

    [[nodiscard]] const std::shared_ptr<const PBAliasObject>& aliasObject() const {
        return _aliasObject;
    }
    [[nodiscard]] const std::optional<QString>& relativePath() const { return _relativePath; }

    /// 0 the same folder, 1 this is above the other, -1 below it, -2 unrelated. Roots are the same
    /// only as objects.
    [[nodiscard]] int compare(const PBScanFinishedObject& other) const;

private:
    std::shared_ptr<const PBAliasObject> _aliasObject;
    std::optional<QString> _relativePath;
};

/// The folders whose files and sub-folders have all been listed on disk in this run of the program.
/// Any thread.
class PBScanFinishedManager {
public:
    [[nodiscard]] std::vector<PBScanFinishedObject> scanFinishedArray() const;
    /// Of two folders one of which holds the other, only the upper one is kept.
    void scanFinished(const PBScanFinishedObject& folder);

private:
    mutable platform::Mutex _lock;
    std::vector<PBScanFinishedObject> _scanFinishedArray VELMORA_GUARDED_BY(_lock);
};
