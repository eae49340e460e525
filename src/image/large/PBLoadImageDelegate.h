#pragma once

#include "image/large/PBImages.h"

#include <cstdint>
#include <memory>

class PBImageFileItem;
class PBLoadImageOperation;

/// Is told when a load that it joined has ended. May go away at any time: loads that run then don't
/// tell it. Main thread.
class PBLoadImageDelegate {
public:
    PBLoadImageDelegate() = default;
    PBLoadImageDelegate(const PBLoadImageDelegate&) = delete;
    PBLoadImageDelegate& operator=(const PBLoadImageDelegate&) = delete;
    virtual ~PBLoadImageDelegate() = default;

    /// `Nothing` for a load that was cancelled while it ran; one that was cancelled before does not
    /// tell. A display hands the rest to `keepLoadedImages`, then looks whether it shows the item.
    virtual void loadImageFinished(
        const PBLoadImageOperation& operation, const LoadedImages& images, double scale,
        const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) = 0;

    /// Expires with this object.
    [[nodiscard]] std::weak_ptr<PBLoadImageDelegate*> link() const { return _link; }

private:
    const std::shared_ptr<PBLoadImageDelegate*> _link =
        std::make_shared<PBLoadImageDelegate*>(this);
};
