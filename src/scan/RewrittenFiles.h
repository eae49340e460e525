#pragma once

#include "group/PBImageFileItem.h"

#include <map>
#include <utility>

/// Photographs that were taken off the work tree because their files were written anew, until they
/// are back under a row of their own: what the user had done to them on the screen goes with them,
/// and no display without them is published. On the scan thread.
class RewrittenFiles {
public:
    struct OnScreen {
        bool isSelected = false;
        bool storedSelect = false;
    };

    void add(const PBImageFileItem& item) {
        _files[{item.folderId(), item.fileName()}] = {item.isSelected(), item.storedSelect()};
    }
    /// The photograph is back, as this item, which nobody else has seen yet.
    void restore(PBImageFileItem& item) {
        const auto found = _files.find({item.folderId(), item.fileName()});
        if (found == _files.end()) return;
        item.setIsSelected(found->second.isSelected);
        item.setStoredSelect(found->second.storedSelect);
        _files.erase(found);
    }
    /// Answers whether any did not come back.
    bool clear() {
        _isEndDue = false;
        return !std::exchange(_files, {}).empty();
    }

    /// Photographs are off the tree.
    [[nodiscard]] bool isAnyOut() const { return !_files.empty(); }

    /// While a folder is looked through, whose checkpoints run other work, the end waits.
    void beginFolder() { ++_folders; }
    /// Answers whether the end is due now.
    [[nodiscard]] bool endFolder() { return --_folders == 0 && _isEndDue; }
    [[nodiscard]] bool mayEnd() {
        _isEndDue = _folders > 0;
        return !_isEndDue;
    }

private:
    int _folders = 0;
    bool _isEndDue = false;
    std::map<std::pair<qint64, QString>, OnScreen> _files;
};
