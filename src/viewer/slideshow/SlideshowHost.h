#pragma once

#include <memory>

class PBImageFileItem;

/// The large view that a show begins in and goes back to. Main thread.
class SlideshowHost {
public:
    SlideshowHost() = default;
    SlideshowHost(const SlideshowHost&) = delete;
    SlideshowHost& operator=(const SlideshowHost&) = delete;
    virtual ~SlideshowHost() = default;

    /// While a show runs, the large view paints and preloads nothing.
    virtual void setIsSlideShowMode(bool isSlideShowMode) = 0;
    /// Which photograph the large view shows; nullptr for none.
    [[nodiscard]] virtual std::shared_ptr<PBImageFileItem> focusImageFileItem() const = 0;
    /// The large view goes to that photograph, which is selected then, in place of the former one.
    virtual void goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) = 0;
};
