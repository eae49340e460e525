#pragma once

#include "group/PBGroupItemData.h"

#include <memory>
#include <optional>

/// Where the group panel is scrolled to: a row and how far the visible part begins below its top.
/// Rows are named by their data, which outlive a change of trees.
struct PBOutlineViewScrollCapture {
    std::shared_ptr<PBGroupItemData> item;
    double offset = 0;
};

namespace group {

/// The outline of the group panel, as far as the data source directs it. Main thread.
class GroupOutline {
public:
    virtual ~GroupOutline() = default;
    /// The row in the middle of what is visible; nothing without rows.
    [[nodiscard]] virtual std::optional<PBOutlineViewScrollCapture> captureOutlineViewScroll() = 0;
    /// Does nothing if the row is gone.
    virtual void scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) = 0;
    /// nullptr when no row is selected.
    [[nodiscard]] virtual std::shared_ptr<PBGroupItemData> selectedItem() const = 0;
    /// Reads the live tree anew. Where its groups are others than before, only those rows are open
    /// then that the user opened, and none is selected.
    virtual void reloadData() = 0;
    virtual void expandItem(const std::shared_ptr<PBGroupItemData>& item) = 0;
    virtual void selectItem(const std::shared_ptr<PBGroupItemData>& item) = 0;
};

/// The other views of the live tree. Main thread.
class GroupTreeDisplay {
public:
    virtual ~GroupTreeDisplay() = default;
    /// The user is scrolling the browser or the photo bin, or dragging in the browser.
    [[nodiscard]] virtual bool isScrollingOrDragging() const = 0;
    /// Gives the browser the leaves of the live tree.
    virtual void updateImageBrowserViewData() = 0;
    virtual void updateLargeViewData() = 0;
    virtual void updateImageBrowserTipView() = 0;
    /// Makes the browser's present position the one that it keeps.
    virtual void updateBrowserScrollCapture() = 0;
};

} // namespace group
