#pragma once

#include "browser/state/BrowserLeafList.h"

/// Where the current image lies on a sheet that is about to be exchanged, and what lies there
/// afterwards: whoever takes images away one after the other goes on with the next. Main thread.
class BrowserNeighbour {
public:
    BrowserNeighbour(const BrowserLeafList& leaves, const PBImageBrowserIndex& current);

    /// The image that takes the place of the former current one, where that has gone: the same
    /// photograph as another item, the next in its leaf, or else the one before; where the leaf is
    /// gone, the first of the leaf that follows, or the last of the sheet. nullptr where the
    /// current image is still there, or nothing is.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> taken(const BrowserLeafList& leaves) const;

private:
    [[nodiscard]] std::shared_ptr<PBImageFileItem>
    sibling(const BrowserLeafList& leaves, std::int64_t group) const;

    PBImageBrowserIndex _index;
    std::shared_ptr<PBImageFileItem> _current;
    std::shared_ptr<PBGroupItemData> _leaf;
    PBImageFileArray _siblings;
};
