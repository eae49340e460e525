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

    /// Photographs are off the tree: what is to be published goes with what comes after them.
    [[nodiscard]] bool holdsBack(bool updateScrollCapture) {
        if (_files.empty()) return false;
        _updateScrollCapture = _updateScrollCapture || updateScrollCapture;
        return true;
    }
    /// Whether what was held back was to capture the position anew; once.
    [[nodiscard]] bool takeUpdateScrollCapture() {
        return std::exchange(_updateScrollCapture, false);
    }

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
    bool _updateScrollCapture = false; ///< of publications that were held back
    std::map<std::pair<qint64, QString>, OnScreen> _files;
};
