#pragma once

#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserLeafList.h"
#include "browser/state/BrowserScrollCapture.h"
#include "browser/state/BrowserSelection.h"

#include <unordered_set>

/// What the user had on a sheet that is about to be filled anew with other items for the same
/// photographs: the selection, the current image, and the image that kept its place on the screen.
/// Images are known again by their file ids as they come; those that don't come are left out.
/// Main thread.
class BrowserCarryOver {
public:
    /// Notes what the sheet shows. What a former sheet had and was not found yet stays noted.
    void note(
        BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& current,
        const QRectF& visible);
    void forget() { *this = {}; }
    /// The user has selected something else.
    void forgetSelection();
    /// The user has scrolled.
    void forgetPlace() { _anchorId = 0; }
    [[nodiscard]] bool isWaiting() const {
        return !_selectedIds.empty() || _currentId != 0 || isPlaceWaiting();
    }
    [[nodiscard]] bool isPlaceWaiting() const { return _anchorId != 0; }

    struct Found {
        bool hasSelected = false;                 ///< images were selected
        std::shared_ptr<PBImageFileItem> current; ///< nullptr: not come yet
        std::optional<PBImageBrowserViewScrollCapture> place;
    };
    /// Selects the images that have come, and answers what else was found. Each is found once.
    [[nodiscard]] Found take(const BrowserLeafList& leaves);

private:
    std::unordered_set<qint64> _selectedIds;
    qint64 _currentId = 0; ///< 0 for none
    qint64 _anchorId = 0;
    double _anchorOffset = 0; ///< from the image's middle down to that of what is visible
};
