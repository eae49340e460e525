#include "image/codec/FrameReader.h"

#include "image/codec/metadata/ImageProperties.h"

#include <mutex>

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

    std::optional<PBDictionary>
    properties(int descriptor, const QString& typeHint, std::size_t frame) override {
        return readImageProperties(descriptor, typeHint, frame);
    }
};

struct Installed {
    std::mutex mutex;
    std::shared_ptr<FrameReader> reader; // guarded by mutex; nullptr: local
};

Installed& installed() {
    static Installed one;
    return one;
}

} // namespace

std::vector<std::optional<PBDictionary>>
FrameReader::propertiesOfPictures(std::span<const OpenPicture> pictures) {
    std::vector<std::optional<PBDictionary>> all;
    all.reserve(pictures.size());
    for (const OpenPicture& picture : pictures)
        all.push_back(properties(picture.descriptor, picture.typeHint, 0));
    return all;
}

std::shared_ptr<FrameReader> frameReader() {
    static const auto local = std::make_shared<LocalReader>();
    const std::scoped_lock lock(installed().mutex);
    if (installed().reader) return installed().reader;
    return local;
}

void setFrameReader(std::shared_ptr<FrameReader> reader) {
    const std::scoped_lock lock(installed().mutex);
    installed().reader.swap(reader);
}

} // namespace codec
