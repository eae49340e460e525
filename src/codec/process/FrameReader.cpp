#include "codec/process/FrameReader.h"

#include "codec/formats/Codecs.h"
#include "codec/metadata/ImageProperties.h"
#include "platform/tasks/Mutex.h"

#include <utility>

namespace codec {

namespace {

class LocalReader final : public FrameReader {
public:
    ReadResult decode(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) override {
        const auto source = Source::fromDescriptor(descriptor);
        if (!source) return {};
        DecodeRequest local = request;
        local.stop = StopFlag(stop);
        ReadResult result{ReadStatus::Decoded, codec::decode(*source, typeHint, local)};
        if (result.frame.image.isNull()) {
            result.status = stop.stop_requested() ? ReadStatus::Failed : ReadStatus::Refused;
        }
        return result;
    }

    std::size_t countFrames(int descriptor, const QString& typeHint) override {
        const auto source = Source::fromDescriptor(descriptor);
        return source ? codec::countFrames(*source, typeHint) : 0;
    }

    PictureProperties properties(
        int descriptor, const QString& typeHint, std::size_t frame, std::stop_token) override {
        return PictureProperties::of(readImageProperties(descriptor, typeHint, frame));
    }
};

class NoReader final : public FrameReader {
public:
    ReadResult decode(int, const QString&, const DecodeRequest&, std::stop_token) override {
        return {ReadStatus::Failed, {}};
    }
    std::size_t countFrames(int, const QString&) override { return 0; }
    PictureProperties properties(int, const QString&, std::size_t, std::stop_token) override {
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

std::vector<PictureProperties>
FrameReader::propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop) {
    std::vector<PictureProperties> all;
    all.reserve(pictures.size());
    for (const OpenPicture& picture : pictures)
        all.push_back(properties(picture.descriptor, picture.typeHint, 0, stop));
    return all;
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
