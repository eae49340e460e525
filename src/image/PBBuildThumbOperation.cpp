#include "image/PBBuildThumbOperation.h"

#include "FMDB/FMDatabase.h"
#include "image/BuiltThumbnails.h"
#include "image/ThumbnailStore.h"
#include "platform/tasks/OperationQueue.h"

void PBBuildThumbOperation::main() {
    build();
    storeIfDue();
    ++_services->finished;
}

void PBBuildThumbOperation::build() {
    if (isCancelled() || !_hasImporter || isStored()) return;
    decodeNextInLine();
    BuiltThumbnails& unstored = _services->unstored;
    if (takeDecoding()) {
        unstored.store(*_services);
        decode();
    }
    if (unstored.isEmpty() || !_decoded.try_acquire_for(unstored.patience())) {
        unstored.store(*_services);
        _decoded.acquire();
    }
    _place.reset();
    QByteArray data = std::move(_data);
    if (!_hasImage) {
        if (!isCancelled()) ++_services->failed;
    } else if (!data.isEmpty()) {
        unstored.add({shared_from_this(), std::move(data)});
    } else if (!isCancelled() && _services->didBuild) {
        _services->didBuild(shared_from_this());
    }
}

void PBBuildThumbOperation::storeIfDue() {
    BuiltThumbnails& unstored = _services->unstored;
    if (unstored.isEmpty()) return;
    const auto next = _services->queue.nextOperations(1);
    const bool isFollowed = !next.empty() && !_services->queue.isSuspended() &&
                            std::dynamic_pointer_cast<PBBuildThumbOperation>(next.front());
    const bool isOnShow = queuePriority() > platform::QueuePriority::Normal;
    if (!isFollowed || isOnShow || unstored.patience().count() <= 0) unstored.store(*_services);
}

bool PBBuildThumbOperation::isStored() {
    if (!_request.checkExist || _isKnownToBeMissing) return false;
    _isKnownToBeMissing = !ThumbnailStore::isThumbnailExist(_services->db, _request.fileId);
    return !_isKnownToBeMissing;
}

void PBBuildThumbOperation::decodeNextInLine() {
    DecodeAhead* ahead = _services->ahead;
    if (!ahead || ahead->capacity() == 0) return;
    const auto line = _services->queue.nextOperations(static_cast<std::size_t>(ahead->capacity()));
    for (const auto& operation : line) {
        const auto next = std::dynamic_pointer_cast<PBBuildThumbOperation>(operation);
        if (!next || next->_place || next->isCancelled() || !next->_hasImporter) continue;
        if (next->isStored()) continue;
        next->_place = ahead->takePlace();
        if (!next->_place) return;
        ahead->run([next] {
            if (next->takeDecoding()) next->decode();
        });
    }
}

void PBBuildThumbOperation::decode() {
    _data = decodeAndEncode();
    _decoded.release();
}

QByteArray PBBuildThumbOperation::decodeAndEncode() {
    if (isCancelled()) return {};
    const QSizeF size = _request.imageSize;
    const bool isKnown = size.width() > 0 && size.height() > 0;
    const bool isSmall =
        isKnown && _request.thumbSize >= size.width() && _request.thumbSize >= size.height();
    const int side = isSmall ? 0 : _request.thumbSize;
    const QImage image =
        _request.imageImporter->createImageWithMaxSize(static_cast<unsigned>(side), 0, stopToken());
    _request.imageImporter.reset();
    _hasImage = !image.isNull();
    return _hasImage ? ThumbnailStore::encode(image) : QByteArray();
}
