#include "image/PBBuildThumbOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "image/ThumbnailStore.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/OperationQueue.h"

#include <sqlite3.h>

void PBBuildThumbOperation::main() {
    build();
    ++_services->finished;
}

void PBBuildThumbOperation::build() {
    if (isCancelled() || !_hasImporter || isStored()) return;
    decodeNextInLine();
    if (!decodeIfNobodyDoes()) _decoding.wait(Decoding::Running);
    _place.reset();
    const QByteArray data = std::move(_data);
    if (!_hasImage) {
        if (!isCancelled()) ++_services->failed;
        return;
    }
    if (!data.isEmpty()) store(data);
    if (!isCancelled() && _services->didBuild) _services->didBuild(shared_from_this());
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
        ahead->run([next] { next->decodeIfNobodyDoes(); });
    }
}

bool PBBuildThumbOperation::decodeIfNobodyDoes() {
    auto expected = Decoding::NotStarted;
    if (!_decoding.compare_exchange_strong(expected, Decoding::Running)) return false;
    _data = decodeAndEncode();
    _decoding = Decoding::Done;
    _decoding.notify_all();
    return true;
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

void PBBuildThumbOperation::store(const QByteArray& data) {
    FMDatabase& db = _services->db;
    if (PBCatalogue(db).insertThumbnailWithFileId(_request.fileId, data)) {
        ++_services->built;
        return;
    }
    // A thumbnail that is there already stays.
    if ((db.lastErrorCode() & 0xff) == SQLITE_CONSTRAINT) return;
    ++_services->failed;
    if (_services->toldFailure.exchange(true)) return;
    platform::complain(QStringLiteral("thumbnails can't be stored in %1 (%2); those that are there "
                                      "stay")
                           .arg(db.databasePath(), db.lastErrorMessage()));
}
