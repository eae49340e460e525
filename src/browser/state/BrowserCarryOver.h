#pragma once

#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserLeafList.h"
#include "browser/state/BrowserScrollCapture.h"
#include "browser/state/BrowserSelection.h"

#include <unordered_set>
#include <vector>

/// What the user had on a sheet that is about to be filled anew with other items for the same
/// photographs: the selection, the current image, and the image that kept its place on the screen.
/// Images are known again by their file ids as they come; those that don't come are left out.
/// Main thread.
class BrowserCarryOver {
public:
    /// The same as values, for another run of the program. Ids of photographs; 0 for none.
    struct Noted {
        std::vector<qint64> selectedIds; ///< in the order of the sheet
        qint64 currentId = 0;
        qint64 anchorId = 0;
        double anchorOffset = 0; ///< from the anchor's middle down to that of what is visible
    };
    [[nodiscard]] static Noted noted(
        BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& current,
        const QRectF& visible);
    BrowserCarryOver() = default;
    explicit BrowserCarryOver(const Noted& noted)
        : _selectedIds(noted.selectedIds.begin(), noted.selectedIds.end()),
          _currentId(noted.currentId), _anchorId(noted.anchorId),
          _anchorOffset(noted.anchorOffset) {}

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
    double _anchorOffset = 0;
};
