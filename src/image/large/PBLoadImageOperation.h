#pragma once

#include "codec/pixels/Decoder.h"
#include "image/large/PBLoadImageDelegate.h"
#include "platform/tasks/Operation.h"

#include <QColorSpace>
#include <QSizeF>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class PBImageFileItem;
class PBImageImporterManager;
class PBImageImporterProtocol;

namespace platform {
class OperationQueue;
}

/// One decode for the large view, at the fit-in scale or at 1. Made and asked on the main thread;
/// only `main` runs on the queue's. A cancellation stops a decode within 20 ms.
///
/// The pictures that come of it may have their last owner on any thread, under any lock: an item
/// that a scan lets go, a tree that is replaced. They are freed on a thread of the load line's own.
class PBLoadImageOperation final : public platform::Operation {
public:
    struct Job {
        QString filePath;
        /// Of the file, in pixels, as the catalogue knows it.
        QSizeF imageSize;
        /// Decoded pixels for each pixel of the file; 1 and above is the full size.
        double scale = 1.0;
        /// What the pictures are for; with the scale, the job's identity.
        std::shared_ptr<PBImageFileItem> contextObj;
        /// Of the item in the list that the display walks.
        std::int64_t index = 0;
        /// Of the window that asked; invalid: sRGB.
        QColorSpace colorSpace;
        /// Nobody waits for it, wherever it stands in the line.
        bool isAhead = false;
    };

    /// The importers outlive the operation.
    PBLoadImageOperation(Job job, PBImageImporterManager& importers);

    [[nodiscard]] const QString& filePath() const { return _job.filePath; }
    [[nodiscard]] QSizeF imageSize() const { return _job.imageSize; }
    [[nodiscard]] double scale() const { return _job.scale; }
    /// Another than at first where a scan brought the photograph again. Main thread.
    [[nodiscard]] const std::shared_ptr<PBImageFileItem>& contextObj() const { return _contextObj; }
    [[nodiscard]] std::int64_t index() const { return _job.index; }
    [[nodiscard]] const QColorSpace& colorSpace() const { return _job.colorSpace; }

    [[nodiscard]] bool isAhead() const { return _job.isAhead; }

    /// Unless it is there already.
    void addDelegate(const PBLoadImageDelegate& display);

    /// `Nothing` until the operation has run, and when it was cancelled. Read after it has ended.
    [[nodiscard]] const LoadedImages& images() const { return _images; }

protected:
    void main() override;

private:
    friend class PBLoadImageManager;

    /// The same job once more, for those who wait for this one: they wait for that instead.
    [[nodiscard]] std::shared_ptr<PBLoadImageOperation> begunAnew();
    [[nodiscard]] codec::DecodeRequest request() const;
    [[nodiscard]] LoadedImages load();
    /// Nothing where the file does not play.
    [[nodiscard]] std::optional<LoadedImages>
    loadAnimation(const std::shared_ptr<PBImageImporterProtocol>& importer) const;
    [[nodiscard]] LoadedImages shared(std::unique_ptr<PBImages> images) const;

    const Job _job;
    std::shared_ptr<PBImageFileItem> _contextObj;
    PBImageImporterManager& _importers;
    std::vector<std::weak_ptr<PBLoadImageDelegate*>> _delegateArray;
    std::weak_ptr<platform::OperationQueue> _releaseQueue;
    bool _isUrgent = false;                         ///< the user waits for it; main thread
    codec::Urgency _urgency = codec::Urgency::Next; ///< not changed once it runs
    LoadedImages _images;
    std::chrono::steady_clock::duration _loadTime{};
};
