#pragma once

#include "image/PBImageBrowserIndex.h"

class PBImageFileItem;

/// The order in which the browser shows images at present. Main thread.
class BrowserOrder {
public:
    virtual ~BrowserOrder() = default;
    /// Invalid when the browser doesn't show the image.
    [[nodiscard]] virtual PBImageBrowserIndex
    indexForImageFile(const PBImageFileItem& imageFile) const = 0;
    [[nodiscard]] virtual std::int64_t leafCount() const = 0;
    /// Both of a leaf from 0 to below `leafCount`.
    [[nodiscard]] virtual std::int64_t imageFileCount(std::int64_t group) const = 0;
    [[nodiscard]] virtual bool isCollapsedForBrowser(std::int64_t group) const = 0;
};
