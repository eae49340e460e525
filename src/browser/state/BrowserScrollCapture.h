#pragma once

#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserLeafList.h"

#include <memory>
#include <optional>

/// What should stay at its place on the screen while the sheet around it changes: a cell or a head,
/// and how far the middle of what is visible lies below its own middle.
struct PBImageBrowserViewScrollCapture {
    enum Type { Anchored = 0, EndOfSheet = 1 };
    Type type = Anchored;
    std::shared_ptr<PBGroupItemData> groupItem;
    std::shared_ptr<PBImageFileItem> imageFileItem; ///< nullptr when the head is the anchor
    double offset = 0;
};

/// Which anchor is taken.
enum class ScrollCaptureMode {
    Nearest = 0,          ///< the head or cell nearest to the middle of what is visible
    VisibleSelection = 1, ///< the first selected image on show, else the end of the sheet
    FirstSelection = 2,   ///< the first selected image, to be shown at the top edge
};

/// Whatever the mode, an image that is being renamed is the anchor. Nothing if there is none.
[[nodiscard]] std::optional<PBImageBrowserViewScrollCapture> captureScrollWithMode(
    ScrollCaptureMode mode, BrowserLayout& layout, const BrowserLeafList& leaves,
    const QRectF& visible, const std::shared_ptr<PBImageFileItem>& editingNameFileItem);

/// Where the sheet has to be scrolled to for the capture; nothing if its anchor is gone. Positions
/// may lie beyond the ends of the sheet.
[[nodiscard]] std::optional<double> scrollPositionOfCapture(
    const PBImageBrowserViewScrollCapture& capture, BrowserLayout& layout,
    const BrowserLeafList& leaves, const QRectF& visible);
