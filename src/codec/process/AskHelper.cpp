#include "codec/process/AskHelper.h"

#include "codec/process/DecoderHelper.h"

namespace codec::process {

Answer
ask(HelperShelf::Lease& lease, const Request& request, std::span<const int> descriptors,
    std::chrono::milliseconds time, const std::stop_token& stop, Reply& reply,
    const std::function<bool(std::uint64_t bytes)>& memory, IfGone ifGone) {
    // A process may have gone while nobody asked it; a second one gets the same request.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!(ifGone == IfGone::GiveUp ? lease.isAlive() : lease.isUsable())) return Answer::NotNow;
        switch (lease.helper().ask(request, descriptors, time, stop, reply, memory)) {
        case DecoderHelper::Outcome::Unsent:
            continue;
        case DecoderHelper::Outcome::Answered:
            return reply.status == Status::Done ? Answer::Done : Answer::Refused;
        case DecoderHelper::Outcome::Crashed:
            return Answer::PictureFailed;
        case DecoderHelper::Outcome::OutOfTime:
            return Answer::OutOfTime;
        case DecoderHelper::Outcome::Stopped:
        case DecoderHelper::Outcome::Lost:
            return Answer::NotNow;
        }
    }
    return Answer::NotNow;
}

} // namespace codec::process
