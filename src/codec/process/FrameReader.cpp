#include "codec/process/FrameReader.h"

#include "codec/formats/Codecs.h"
#include "codec/metadata/ImageProperties.h"
#include "platform/tasks/Cores.h"
#include "platform/tasks/Mutex.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace codec {

namespace {

class LocalSequence final : public FrameSequence {
public:
    LocalSequence(Source source, std::unique_ptr<Decoder> decoder, DecodeRequest request)
        : _source(std::move(source)), _decoder(std::move(decoder)), _request(std::move(request)),
          _count(framesToPlay(*_decoder)) {}

    std::size_t frameCount() const override { return _count; }
    void rewind() override {
        _next = 0;
        _isOver = false;
    }
    SequenceFrame next(std::stop_token stop) override {
        if (_isOver || _next >= _count) return {};
        _isOver = true;
        Frame frame;
        int delay = 0;
        try {
            _request.frame = _next;
            _request.stop = StopFlag(stop);
            frame = _decoder->frame(_request);
            if (_count > 1) delay = shownDelay(_decoder->frameDelay(_next));
        } catch (const std::exception&) {
            frame = {};
        }
        if (stop.stop_requested()) return {SequenceStatus::NotNow, {}, 0};
        SequenceFrame next = sequenceFrame(std::move(frame), _next, delay);
        _isOver = next.status != SequenceStatus::Decoded || !next.frame.isComplete;
        ++_next;
        return next;
    }

private:
    const Source _source;
    const std::unique_ptr<Decoder> _decoder;
    DecodeRequest _request;
    const std::size_t _count;
    std::size_t _next = 0;
    bool _isOver = false;
};

class LocalReader final : public FrameReader {
public:
    ReadResult decode(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) override {
        const auto source = Source::fromDescriptor(descriptor);
        if (!source) return {};
        DecodeRequest local = request;
        local.stop = StopFlag(stop);
        local.threads = threadsFor(request.urgency);
        ReadResult result{ReadStatus::Decoded, codec::decode(*source, typeHint, local)};
        if (result.frame.image.isNull()) {
            result.status = stop.stop_requested() ? ReadStatus::NotNow : ReadStatus::Refused;
        }
        return result;
    }

    OpenedSequence openSequence(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token) override {
        auto source = Source::fromDescriptor(descriptor);
        if (!source) return {ReadStatus::Refused, nullptr};
        try {
            auto decoder = openDecoder(*source, typeHint);
            if (!decoder) return {ReadStatus::Refused, nullptr};
            DecodeRequest local = request;
            local.threads = threadsFor(request.urgency);
            return {
                ReadStatus::Decoded, std::make_unique<LocalSequence>(
                                         std::move(*source), std::move(decoder), std::move(local))};
        } catch (const std::exception&) {
            return {ReadStatus::Refused, nullptr};
        }
    }

    std::size_t countFrames(int descriptor, const QString& typeHint, Urgency) override {
        const auto source = Source::fromDescriptor(descriptor);
        return source ? codec::countFrames(*source, typeHint) : 0;
    }

    PictureProperties properties(
        int descriptor, const QString& typeHint, std::size_t frame, std::stop_token) override {
        return PictureProperties::of(readImageProperties(descriptor, typeHint, frame));
    }

    ReadMetadata
    metadataBlocks(int descriptor, const NewPicture& picture, std::stop_token) override {
        const auto blocks = readMetadataBlocks(descriptor);
        if (!blocks) return {PropertiesStatus::Unreadable, {}};
        return {PropertiesStatus::Read, carriedMetadata(*blocks, picture)};
    }

    bool embedMetadata(
        QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile,
        std::stop_token) override {
        return codec::embedMetadata(file, metadata, profile);
    }
};

class NoReader final : public FrameReader {
public:
    ReadResult decode(int, const QString&, const DecodeRequest&, std::stop_token) override {
        return {ReadStatus::NotNow, {}};
    }
    OpenedSequence
    openSequence(int, const QString&, const DecodeRequest&, std::stop_token) override {
        return {};
    }
    std::size_t countFrames(int, const QString&, Urgency) override { return 0; }
    PictureProperties properties(int, const QString&, std::size_t, std::stop_token) override {
        return {};
    }
    ReadMetadata metadataBlocks(int, const NewPicture&, std::stop_token) override { return {}; }
    bool
    embedMetadata(QByteArray&, const MetadataBlocks&, const QByteArray&, std::stop_token) override {
        return false;
    }
    QByteArray encode(
        const QImage&, const QByteArray&, const MetadataBlocks&, const EncodeSettings&) override {
        return {};
    }
};

/// What importers that nobody hands a reader go through: there is one for the whole process.
class InstalledReader {
public:
    [[nodiscard]] std::shared_ptr<FrameReader> get() {
        const platform::Lock lock(_mutex);
        return _reader ? _reader : _local;
    }
    /// Gives back the one before, which goes away outside of the lock.
    std::shared_ptr<FrameReader> exchange(std::shared_ptr<FrameReader> reader) {
        const platform::Lock lock(_mutex);
        return std::exchange(_reader, std::move(reader));
    }

private:
    const std::shared_ptr<FrameReader> _local = std::make_shared<LocalReader>();
    platform::Mutex _mutex;
    std::shared_ptr<FrameReader> _reader VELMORA_GUARDED_BY(_mutex); // nullptr: local
};

InstalledReader& installed() {
    static InstalledReader one;
    return one;
}

} // namespace

int threadsFor(Urgency urgency) {
    // More add little, and each takes address space of its own.
    constexpr int most = 16;
    return urgency == Urgency::Focus ? std::min(platform::usableCores(), most) : 1;
}

std::size_t framesToPlay(Decoder& decoder) {
    return decoder.isAnimation() ? std::clamp<std::size_t>(decoder.frameCount(), 1, mostFrames) : 1;
}

SequenceFrame sequenceFrame(Frame frame, std::size_t index, int delay) {
    if (frame.image.isNull() || (index > 0 && !frame.isComplete))
        return {SequenceStatus::Damaged, {}, 0};
    return {SequenceStatus::Decoded, std::move(frame), delay};
}

std::vector<PictureProperties>
FrameReader::propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop) {
    std::vector<PictureProperties> all;
    all.reserve(pictures.size());
    for (const OpenPicture& picture : pictures)
        all.push_back(properties(picture.descriptor, picture.typeHint, 0, stop));
    return all;
}

QByteArray FrameReader::encode(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings) {
    return encodeToTheEnd(image, profile, metadata, settings);
}

std::shared_ptr<FrameReader> noReader() {
    return std::make_shared<NoReader>();
}

std::shared_ptr<FrameReader> frameReader() {
    return installed().get();
}

void setFrameReader(std::shared_ptr<FrameReader> reader) {
    installed().exchange(std::move(reader));
}

} // namespace codec
