#include "codec/PBImageImporterProtocol.h"

#include <climits>
#include <utility>

namespace {

/// The one frame of a file that does not play.
class StillSequence final : public codec::FrameSequence {
public:
    explicit StillSequence(codec::Frame frame) : _frame(std::move(frame)) {}

    std::size_t frameCount() const override { return 1; }
    codec::SequenceFrame next(std::stop_token) override {
        if (std::exchange(_isOver, true)) return {};
        return {codec::SequenceStatus::Decoded, _frame, 0};
    }
    void rewind() override { _isOver = false; }

private:
    const codec::Frame _frame;
    bool _isOver = false;
};

} // namespace

QImage PBImageImporterProtocol::createImageWithMaxSize(
    unsigned maxSize, std::size_t index, std::stop_token stop) {
    codec::DecodeRequest request;
    request.frame = index;
    request.maxSize = static_cast<int>(std::min(maxSize, static_cast<unsigned>(INT_MAX)));
    request.urgency = _urgency.value_or(request.urgency);
    return readImage(request, stop).frame.image;
}

codec::OpenedSequence
PBImageImporterProtocol::openSequence(const codec::DecodeRequest& request, std::stop_token stop) {
    codec::DecodeRequest first = request;
    first.frame = 0;
    codec::ReadResult result = readImage(first, stop);
    if (result.status != codec::ReadStatus::Decoded) return {result.status, nullptr};
    return {result.status, std::make_unique<StillSequence>(std::move(result.frame))};
}
