#pragma once

#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"
#include "codec/process/SharedMemory.h"

#include <QByteArray>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

#include <sys/types.h>

namespace codec::process {

/// The program's side of one decoder process: starts it, asks it, and ends it. Used by one thread
/// at a time.
class DecoderHelper {
public:
    /// Starts the process; nothing if that fails. Does not wait for it to come up.
    [[nodiscard]] static std::unique_ptr<DecoderHelper>
    start(const QByteArray& executable, std::uint64_t addressSpaceBytes);
    /// Ends the process at once.
    ~DecoderHelper();
    DecoderHelper(const DecoderHelper&) = delete;
    DecoderHelper& operator=(const DecoderHelper&) = delete;

    enum class Outcome {
        Answered,  ///< a reply came, good or bad
        Stopped,   ///< the caller asked to stop; the process may be gone
        Crashed,   ///< it ended itself over what it was asked
        OutOfTime, ///< it computed for all its time, and was ended
        Lost,      ///< it did not come up, was ended by others, or waited for too long
        Unsent,    ///< it was gone before the request reached it
    };

    /// Sends the request (numbered here) with its descriptors and waits for the reply, at most for
    /// the time given, which begins once the process has come up. Where the machine is busy, it is
    /// the processor's time that counts, up to a few times as long. A stop is honoured within
    /// `stopPatience`.
    /// `memory` is asked, and may block, before a decode that takes so many bytes; what it waits
    /// does not count. Without it such decodes fail.
    [[nodiscard]] Outcome
    ask(Request request, std::span<const int> descriptors, std::chrono::milliseconds time,
        const std::stop_token& stop, Reply& reply,
        const std::function<bool(std::uint64_t bytes)>& memory = {});

    /// Sends a request without descriptors that nobody waits for.
    void tell(Request request);

    /// False once the process was lost or ended; a new helper must take its place.
    [[nodiscard]] bool isAlive() const { return _process > 0; }
    /// The memory for small results, as the last reply left it.
    [[nodiscard]] std::span<const char> smallResult() const;
    /// The confinements that the kernel refused, once the process has said so.
    [[nodiscard]] std::optional<std::uint64_t> refusals() const { return _refusals; }

private:
    DecoderHelper() = default;
    [[nodiscard]] bool makeChannels();
    [[nodiscard]] bool spawn(const QByteArray& executable, std::uint64_t addressSpaceBytes);
    [[nodiscard]] Outcome waitForReply(
        std::uint32_t number, std::chrono::milliseconds time, const std::stop_token& stop,
        Reply& reply, const std::function<bool(std::uint64_t bytes)>& memory);
    /// Kills the process; its status if it ends soon.
    std::optional<int> end(std::chrono::milliseconds patience);
    /// For the rest: of a process whose connection broke off.
    [[nodiscard]] Outcome outcomeOfEnd();
    /// That the process has used so far.
    [[nodiscard]] std::chrono::nanoseconds processorTime() const;

    pid_t _process = -1;
    Descriptor _socket;
    Descriptor _remoteSocket; // only until the process has it
    Descriptor _controlMemory;
    Descriptor _resultMemory;
    Descriptor _stopEvent;
    std::optional<Mapping> _control;
    std::optional<Mapping> _results;
    std::optional<std::uint64_t> _refusals;
    std::uint32_t _lastNumber = 0;
};

} // namespace codec::process
