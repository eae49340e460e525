#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "platform/tasks/Operation.h"

#include <QImage>

#include <functional>
#include <memory>
#include <vector>

class PBImageFileItem;

/// Reads images for cells whose stored thumbnails have too few pixels, or are not there yet, in the
/// order given. What comes of it is shown and never stored. A cancellation stops it within a
/// picture.
class SharpThumbnailOperation final : public platform::Operation {
public:
    struct Request {
        std::shared_ptr<PBImageFileItem> imageFileItem;
        std::unique_ptr<PBImageImporterProtocol> imageImporter;
        /// Pixels of the longer side.
        int side = 0;
        /// Only the small picture that the camera put into the file, cut to the image's shape.
        bool onlyEmbedded = false;
    };
    /// With a null image where the file can't be read.
    using Finished = std::function<void(
        const std::shared_ptr<PBImageFileItem>& item, int side, const QImage& image)>;

    /// `finished` runs on the main thread, possibly after the operation is gone; not for what was
    /// cancelled.
    SharpThumbnailOperation(std::vector<Request> requests, Finished finished);

protected:
    void main() override;

private:
    [[nodiscard]] QImage read(const Request& request) const;

    std::vector<Request> _requests;
    const Finished _finished;
};
