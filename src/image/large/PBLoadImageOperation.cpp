#include "image/large/PBLoadImageOperation.h"

#include "codec/PBImageImporterManager.h"
#include "group/PBImageFileItem.h"
#include "image/large/AnimationFrames.h"
#include "image/large/EarlyPhotograph.h"
#include "image/large/LoadRequests.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"

#include <algorithm>
#include <utility>

using codec::ReadStatus;

namespace {

constexpr double secondsPerMillisecond = 1e-3;

} // namespace

PBLoadImageOperation::PBLoadImageOperation(Job job, PBImageImporterManager& importers)
    : _job(std::move(job)), _contextObj(_job.contextObj), _importers(importers) {}

void PBLoadImageOperation::addDelegate(const PBLoadImageDelegate& display) {
    platform::assertMainThread();
    const auto isSame = [link = display.link()](const auto& other) {
        return !link.owner_before(other) && !other.owner_before(link);
    };
    if (std::ranges::none_of(_delegateArray, isSame)) _delegateArray.push_back(display.link());
}

std::shared_ptr<PBLoadImageOperation> PBLoadImageOperation::begunAnew() {
    platform::assertMainThread();
    auto again = std::make_shared<PBLoadImageOperation>(_job, _importers);
    again->_contextObj = _contextObj;
    again->_delegateArray = std::exchange(_delegateArray, {});
    again->_releaseQueue = _releaseQueue;
    return again;
}

LoadedImages PBLoadImageOperation::shared(std::unique_ptr<PBImages> images) const {
    const auto freeElsewhere = [queue = _releaseQueue](const PBImages* last) {
        std::shared_ptr<const PBImages> owned(last);
        if (const auto releases = queue.lock())
            releases->addOperation([owned = std::move(owned)] {});
    };
    return LoadedImages::of(std::shared_ptr<const PBImages>(images.release(), freeElsewhere));
}

void PBLoadImageOperation::main() {
    const auto begin = std::chrono::steady_clock::now();
    LoadedImages loaded = isCancelled() ? LoadedImages{} : load();
    // A cancelled job reports nothing, whatever it still came to.
    if (!isCancelled()) _images = std::move(loaded);
    _loadTime = std::chrono::steady_clock::now() - begin;
}

codec::DecodeRequest PBLoadImageOperation::request() const {
    const double longer = std::max(_job.imageSize.width(), _job.imageSize.height());
    const double wanted = _job.scale < 1.0 ? std::max(1.0, _job.scale * longer) : 0;
    codec::DecodeRequest request = LoadRequests::make(wanted, _job.colorSpace);
    request.urgency = _urgency;
    return request;
}

LoadedImages PBLoadImageOperation::load() {
    const std::shared_ptr<PBImageImporterProtocol> importer =
        _importers.imageImporterForImageURL(_job.filePath);
    if (!importer) return LoadedImages::nullMarker();
    importer->setUrgency(_urgency);
    // What was opened from outside may have been begun before anybody asked the line for it.
    auto early = EarlyPhotograph::shared().take(
        _job.filePath, _job.contextObj->fileSize(), _job.contextObj->modifiedDate(), request(),
        stopToken());
    if (!early && LoadRequests::mayPlay(importer->utiType()))
        if (auto animation = loadAnimation(importer)) return std::move(*animation);
    codec::ReadResult result =
        early ? *std::move(early) : importer->readImage(request(), stopToken());
    if (result.status == ReadStatus::NotNow) return LoadedImages::notNow();
    if (result.frame.image.isNull()) return LoadedImages::nullMarker();
    return shared(std::make_unique<PBImages>(std::vector{PBImage(std::move(result.frame.image))}));
}

std::optional<LoadedImages> PBLoadImageOperation::loadAnimation(
    const std::shared_ptr<PBImageImporterProtocol>& importer) const {
    const auto opened = importer->openSequence(request(), stopToken());
    if (!opened.sequence || !opened.sequence->isAnimation()) return std::nullopt;
    codec::SequenceFrame first = opened.sequence->next(stopToken());
    if (first.status == codec::SequenceStatus::NotNow) return LoadedImages::notNow();
    if (first.frame.image.isNull()) return std::nullopt;
    // What plays later takes a decoder only then.
    codec::DecodeRequest later = request();
    later.urgency = codec::Urgency::Focus;
    auto played = std::make_shared<AnimationFrames>(
        [importer, later](const std::stop_token& stop) {
            return importer->openSequence(later, stop);
        },
        opened.sequence->frameCount());
    return shared(std::make_unique<PBImages>(
        PBImage(std::move(first.frame.image), first.delay * secondsPerMillisecond),
        std::move(played)));
}
