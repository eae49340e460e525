#include "codec/process/HelperSequence.h"

#include "codec/process/AskHelper.h"
#include "codec/process/DecodeExchange.h"
#include "codec/process/DecoderHelper.h"

namespace codec::process {

namespace {

/// Longer than any frame stays, and far from overflowing.
constexpr std::uint64_t longestDelay = 1U << 30;

ReadStatus statusOf(Answer answer) {
    switch (answer) {
    case Answer::Done:
        return ReadStatus::Decoded;
    case Answer::Refused:
        return ReadStatus::Refused;
    case Answer::PictureFailed:
        return ReadStatus::Failed;
    case Answer::OutOfTime:
    case Answer::NotNow:
        break;
    }
    return ReadStatus::NotNow;
}

void closeIn(HelperShelf::Lease& lease) {
    if (lease.isAlive()) lease.helper().tell(makeRequest(Kind::CloseSequence, {}, 0));
}

} // namespace

OpenedSequence HelperSequence::open(
    std::shared_ptr<HelperShelf> shelf, int descriptor, const QString& typeHint,
    const DecodeRequest& request, std::chrono::milliseconds time, const std::stop_token& stop) {
    const DecodeExchange exchange(Kind::OpenSequence, typeHint, request, descriptor);
    if (!exchange.isUsable()) return {};
    auto lease = std::make_unique<HelperShelf::Lease>(std::move(shelf), request.urgency, stop);
    MemoryBudget::Share memory;
    const auto takeMemory = [&](std::uint64_t bytes) {
        memory = lease->shelf().memory().take(bytes, stop, request.urgency == Urgency::Focus);
        return memory != nullptr;
    };
    Reply reply;
    const Answer answer =
        ask(*lease, exchange.request(), exchange.descriptors(), time, stop, reply, takeMemory);
    const bool isLie = answer == Answer::Done && (reply.count < 1 || reply.count > mostFrames);
    if (answer != Answer::Done || isLie) {
        // It may have opened the file all the same, behind a stop.
        closeIn(*lease);
        if (stop.stop_requested()) return {};
        return {isLie ? ReadStatus::Failed : statusOf(answer), nullptr};
    }
    DecodeRequest frames = request;
    frames.frame = 0;
    return {
        ReadStatus::Decoded,
        std::unique_ptr<FrameSequence>(new HelperSequence(
            std::move(lease), std::move(memory), std::move(frames), time, reply.count))};
}

HelperSequence::~HelperSequence() {
    closeIn(*_lease);
}

void HelperSequence::rewind() {
    if (!_lease->isAlive()) return;
    _request.frame = 0;
    _isOver = false;
}

SequenceFrame HelperSequence::next(std::stop_token stop) {
    if (_isOver || _request.frame >= _count) return {};
    _isOver = true;
    DecodeExchange exchange(Kind::NextFrame, {}, _request, -1);
    if (!exchange.isUsable()) return {SequenceStatus::NotNow, {}, 0};
    Reply reply;
    const Answer answer =
        ask(*_lease, exchange.request(), exchange.descriptors(), _time, stop, reply, {},
            IfGone::GiveUp);
    // Those who gave way did so for the first frame.
    _lease->setInBackground();
    if (stop.stop_requested()) return {SequenceStatus::NotNow, {}, 0};
    if (answer != Answer::Done) {
        const bool isDamaged = statusOf(answer) != ReadStatus::NotNow;
        return {isDamaged ? SequenceStatus::Damaged : SequenceStatus::NotNow, {}, 0};
    }
    const int delay = _count > 1 ? static_cast<int>(std::min(reply.count, longestDelay)) : 0;
    SequenceFrame next = sequenceFrame(
        exchange.accept(reply, _lease->helper().smallResult()), _request.frame, delay);
    _isOver = next.status != SequenceStatus::Decoded || !next.frame.isComplete;
    ++_request.frame;
    return next;
}

} // namespace codec::process
