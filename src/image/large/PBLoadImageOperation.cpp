#include "image/large/PBLoadImageOperation.h"

#include "codec/Bitmaps.h"
#include "codec/PBImageImporterManager.h"
#include "platform/files/TypeIdentifiers.h"
#include "platform/tasks/OperationQueue.h"

#include <algorithm>

PBLoadImageOperation::PBLoadImageOperation(Job job, PBImageImporterManager& importers)
    : _job(std::move(job)), _importers(importers) {}

std::vector<PBLoadImageDelegate*> PBLoadImageOperation::delegates() const {
    std::vector<PBLoadImageDelegate*> alive;
    for (const auto& link : _delegateArray)
        if (const auto display = link.lock()) alive.push_back(*display);
    return alive;
}

void PBLoadImageOperation::addDelegate(const PBLoadImageDelegate& display) {
    const auto isSame = [link = display.link()](const auto& other) {
        return !link.owner_before(other) && !other.owner_before(link);
    };
    if (std::ranges::none_of(_delegateArray, isSame)) _delegateArray.push_back(display.link());
}

LoadedImages PBLoadImageOperation::shared(std::unique_ptr<PBImages> images) const {
    const auto freeElsewhere = [queue = _releaseQueue](const PBImages* last) {
        std::shared_ptr<const PBImages> owned(last);
        if (const auto releases = queue.lock())
            releases->addOperation([owned = std::move(owned)] {});
    };
    return LoadedImages::of(std::shared_ptr<const PBImages>(images.release(), freeElsewhere));
}
