#pragma once

#include "codec/process/HelperShelf.h"
#include "codec/process/Protocol.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>

namespace codec::process {

/// What became of a request.
enum class Answer {
    Done,
    Refused,       ///< the process looked at the picture and could not do it
    PictureFailed, ///< the process was lost to what it read
    OutOfTime,     ///< it computed for all its time, and was ended
    NotNow,        ///< it was not there, or was stopped, ended or held up by others
};

/// Whether a process that was gone before the request reached it is replaced by another.
enum class IfGone { AskAnother, GiveUp };

/// Asks the leased process; see `DecoderHelper::ask`.
[[nodiscard]] Answer
ask(HelperShelf::Lease& lease, const Request& request, std::span<const int> descriptors,
    std::chrono::milliseconds time, const std::stop_token& stop, Reply& reply,
    const std::function<bool(std::uint64_t bytes)>& memory = {},
    IfGone ifGone = IfGone::AskAnother);

} // namespace codec::process
