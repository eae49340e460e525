#pragma once

#include "image/large/PBLoadImageDelegate.h"
#include "viewer/slideshow/SlideshowPictures.h"

#include <vector>

/// The pictures of a show by the line of loads that the large view uses, each at the scale at which
/// it fits in. Main thread.
class LoadedSlideshowPictures final : public SlideshowPictures, public PBLoadImageDelegate {
public:
    /// Both outlive this object.
    LoadedSlideshowPictures(LargeImageRequests& requests, PBLoadImageManager& manager);
    ~LoadedSlideshowPictures() override;

    [[nodiscard]] SlideshowPicture pictureOf(const IndexedImage& image) override;
    void preload(std::span<const IndexedImage> images, std::int64_t current) override;
    void setListener(Listener listener) override { _listener = std::move(listener); }
    void forget() override;

    void loadImageFinished(
        const PBLoadImageOperation& operation, const LoadedImages& images, double scale,
        const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) override;

private:
    LargeImageRequests& _requests;
    PBLoadImageManager& _manager;
    Listener _listener = [](const PBImageFileItem&) {};
    /// What comes next: it stays in memory, however far apart the photographs are in their list.
    std::vector<std::shared_ptr<PBImageFileItem>> _ahead;
    std::vector<IndexedImage> _preloaded; // the same, as it was asked for
    std::int64_t _current = -1;
};
