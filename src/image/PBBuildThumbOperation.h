#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "image/DecodeAhead.h"
#include "platform/tasks/Operation.h"

#include <QByteArray>
#include <QSizeF>

#include <atomic>
#include <functional>
#include <memory>
#include <semaphore>

class BuiltThumbnails;
class FMDatabase;
class PBBuildThumbOperation;

/// What all thumbnail operations of the program share. Everything outlives the build queue.
struct BuildThumbServices {
    FMDatabase& db; ///< of the build queue, on thumbnail.db
    platform::OperationQueue& queue;
    BuiltThumbnails& unstored; ///< of the build queue
    /// nullptr: nothing is decoded ahead.
    DecodeAhead* ahead = nullptr;
    /// Told of each finished thumbnail, on the build queue's thread.
    std::function<void(const std::shared_ptr<const PBBuildThumbOperation>&)> didBuild;

    /// Operations that have ended, whatever they did.
    std::atomic<quint64> finished{0};
    std::atomic<quint64> built{0};
    std::atomic<quint64> failed{0};
    std::atomic<bool> toldFailure{false}; ///< to the user, that thumbnails can't be stored
};

/// Decodes one image at thumbnail size and stores it: at once where it is on show, else with some
/// that follow. One at a time, on the build queue, where it is known by its file id.
class PBBuildThumbOperation final : public platform::Operation,
                                    public std::enable_shared_from_this<PBBuildThumbOperation> {
public:
    struct Request {
        qint64 fileId = 0;
        std::unique_ptr<PBImageImporterProtocol> imageImporter;
        /// Nothing is done where a thumbnail is stored.
        bool checkExist = false;
        /// Longer side of the thumbnail in pixels.
        int thumbSize = 256;
        /// Pixels; not above 0 where it is not known.
        QSizeF imageSize;
    };

    PBBuildThumbOperation(std::shared_ptr<BuildThumbServices> services, Request request)
        : Operation(request.fileId), _services(std::move(services)), _request(std::move(request)),
          _hasImporter(_request.imageImporter != nullptr) {}

    [[nodiscard]] qint64 fileId() const { return _request.fileId; }

protected:
    void main() override;

private:
    void build();
    [[nodiscard]] bool isStored();
    void decodeNextInLine();
    /// False if another thread decodes, or has.
    [[nodiscard]] bool takeDecoding() { return !_isDecodingTaken.exchange(true); }
    void decode();
    [[nodiscard]] QByteArray decodeAndEncode();
    /// What waits to be stored goes on waiting only while others are sure to follow soon.
    void storeIfDue();

    const std::shared_ptr<BuildThumbServices> _services;
    Request _request; // the importer belongs to the one who decodes
    const bool _hasImporter;
    // On the build queue's thread only:
    DecodeAhead::Place _place;
    bool _isKnownToBeMissing = false;

    std::atomic<bool> _isDecodingTaken{false};
    std::binary_semaphore _decoded{0};
    // Written by the one who decodes, read when that is done.
    QByteArray _data;
    bool _hasImage = false;
};
