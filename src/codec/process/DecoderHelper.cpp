#include "codec/process/DecoderHelper.h"

#include "codec/process/PacketSocket.h"
#include "codec/process/Reaper.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>

extern char** environ;

namespace codec::process {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a decoder may take to notice that it should stop before its process is ended. With the
/// time that ending takes, a stop holds within 20 ms. A tile of a HEIF picture takes about 8.
constexpr auto stopPatience = std::chrono::milliseconds(12);
/// How long a process may take to come up: much where the machine is busy.
constexpr auto startPatience = std::chrono::milliseconds(10'000);
/// Killed processes mostly end within a few milliseconds; one that holds gigabytes takes longer,
/// and one that waits for a disk may never end.
constexpr auto killPatience = std::chrono::milliseconds(100);
/// Where others use the processor, a process may take so many times its time.
constexpr int busyFactor = 4;
/// A process that has used less than this part of the time has waited for something else.
constexpr int leastPart = 50;
/// For the end of a process that was asked to stop: somebody waits, and it goes without being
/// looked at.
constexpr auto stopKillPatience = std::chrono::milliseconds(4);
/// The descriptors of the child start here; the copies that dup2 reads from must lie above.
constexpr int firstFreeDescriptor = 10;

/// The same descriptor, out of the way of the numbers that the child uses.
Descriptor moveUp(Descriptor descriptor) {
    return Descriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, firstFreeDescriptor));
}

struct FileActions {
    posix_spawn_file_actions_t actions;
    FileActions() { ::posix_spawn_file_actions_init(&actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
};

struct Attributes {
    posix_spawnattr_t attributes;
    /// Signals as in a fresh process, whatever this one blocks or ignores.
    Attributes() {
        ::posix_spawnattr_init(&attributes);
        sigset_t signals;
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes, &signals);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
};

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 1'000'000));
}

} // namespace

std::unique_ptr<DecoderHelper>
DecoderHelper::start(const QByteArray& executable, std::uint64_t addressSpaceBytes) {
    reapLeftBehind();
    std::unique_ptr<DecoderHelper> helper(new DecoderHelper);
    if (!helper->makeChannels() || !helper->spawn(executable, addressSpaceBytes)) return nullptr;
    return helper;
}

DecoderHelper::~DecoderHelper() {
    end(killPatience);
}

bool DecoderHelper::makeChannels() {
    std::array<int, 2> pair{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair.data()) != 0) return false;
    _socket = Descriptor(pair[0]);
    _remoteSocket = moveUp(Descriptor(pair[1]));
    _controlMemory = moveUp(makeSharedMemory(sizeof(std::uint32_t)));
    _resultMemory = moveUp(makeSharedMemory(smallResultBytes));
    _stopEvent = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    _control = Mapping::of(_controlMemory.get(), sizeof(std::uint32_t), Mapping::Access::ReadWrite);
    _results = Mapping::of(_resultMemory.get(), smallResultBytes, Mapping::Access::Read);
    return _remoteSocket.isOpen() && _stopEvent.isOpen() && _control && _results;
}

bool DecoderHelper::spawn(const QByteArray& executable, std::uint64_t addressSpaceBytes) {
    FileActions files;
    auto* actions = &files.actions;
    ::posix_spawn_file_actions_addopen(actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // Libraries comment on every damaged file; only a sanitizer's report is worth reading.
    ::posix_spawn_file_actions_addopen(actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
#endif
    ::posix_spawn_file_actions_adddup2(actions, _remoteSocket.get(), socketDescriptor);
    ::posix_spawn_file_actions_adddup2(actions, _controlMemory.get(), controlDescriptor);
    ::posix_spawn_file_actions_adddup2(actions, _resultMemory.get(), resultDescriptor);
    ::posix_spawn_file_actions_addclosefrom_np(actions, resultDescriptor + 1);
    const Attributes attributes;

    QByteArray program("velmora");
    QByteArray argument(decoderArgument);
    QByteArray space = QByteArray::number(static_cast<qulonglong>(addressSpaceBytes));
    std::array<char*, 4> arguments{program.data(), argument.data(), space.data(), nullptr};
    const int result = ::posix_spawn(
        &_process, executable.constData(), actions, &attributes.attributes, arguments.data(),
        environ);
    _remoteSocket = Descriptor();
    if (result == 0) return true;
    _process = -1;
    return false;
}

DecoderHelper::Outcome DecoderHelper::ask(
    Request request, std::span<const int> descriptors, std::chrono::milliseconds time,
    const std::stop_token& stop, Reply& reply,
    const std::function<bool(std::uint64_t bytes)>& memory) {
    request.number = ++_lastNumber;
    if (!sendPacket(_socket.get(), std::as_bytes(std::span(&request, 1)), descriptors)) {
        end(killPatience);
        return Outcome::Unsent;
    }
    const std::stop_callback wake(stop, [this] {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(_stopEvent.get(), &one, sizeof one);
    });
    const Outcome outcome = waitForReply(request.number, time, stop, reply, memory);
    if (outcome != Outcome::Answered && outcome != Outcome::Stopped) end(killPatience);
    return outcome;
}

void DecoderHelper::tell(Request request) {
    request.number = ++_lastNumber;
    if (!sendPacket(_socket.get(), std::as_bytes(std::span(&request, 1)))) end(killPatience);
}

DecoderHelper::Outcome DecoderHelper::waitForReply(
    std::uint32_t number, std::chrono::milliseconds time, const std::stop_token& stop, Reply& reply,
    const std::function<bool(std::uint64_t bytes)>& memory) {
    bool isStopping = false;
    bool hasAskedForMemory = false;
    auto begin = Clock::now();
    auto usedBefore = processorTime();
    auto deadline = begin + (_refusals ? time : startPatience);
    Outcome outcome = Outcome::Lost;
    while (true) {
        std::array<pollfd, 2> events{
            pollfd{_socket.get(), POLLIN, 0},
            pollfd{isStopping ? -1 : _stopEvent.get(), POLLIN, 0}};
        const int ready = ::poll(events.data(), events.size(), millisecondsUntil(deadline));
        if (ready < 0 && errno != EINTR) break;
        if (events[0].revents != 0) {
            std::vector<Descriptor> none;
            if (!receivePacket(_socket.get(), std::as_writable_bytes(std::span(&reply, 1)), none)) {
                outcome = outcomeOfEnd();
                break;
            }
            // There is one greeting; a process that goes on greeting is at work.
            if (reply.number == 0 && !_refusals) {
                _refusals = reply.count;
                begin = Clock::now();
                usedBefore = processorTime();
                if (!isStopping) deadline = begin + time;
            } else if (reply.number == number && reply.status == Status::NeedsMemory) {
                if (std::exchange(hasAskedForMemory, true)) break;
                Request answer;
                answer.number = number;
                answer.kind = memory && memory(reply.count) ? Kind::Grant : Kind::Deny;
                if (!sendPacket(_socket.get(), std::as_bytes(std::span(&answer, 1)))) break;
                begin = Clock::now();
                usedBefore = processorTime();
                if (!isStopping) deadline = begin + time;
            } else if (reply.number == number) {
                return isStopping ? Outcome::Stopped : Outcome::Answered;
            }
        }
        if (events[1].revents != 0) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto read = ::read(_stopEvent.get(), &count, sizeof count);
            // A wake that an earlier request left behind stops nothing.
            if (stop.stop_requested()) {
                isStopping = true;
                static_cast<std::atomic<std::uint32_t>*>(_control->data())->store(number);
                deadline = std::min(deadline, Clock::now() + stopPatience);
            }
        }
        const auto now = Clock::now();
        if (now < deadline) continue;
        if (isStopping || !_refusals) break;
        const auto used = processorTime() - usedBefore;
        const bool isComputing = used * leastPart >= now - begin;
        if (isComputing && used < time && now - begin < busyFactor * time) {
            deadline = now + (time - used);
            continue;
        }
        // One that got less of the processor was held up by others, or by a disk.
        if (used >= time) outcome = Outcome::OutOfTime;
        break;
    }
    if (!isStopping) return outcome;
    end(stopKillPatience);
    return Outcome::Stopped;
}

std::chrono::nanoseconds DecoderHelper::processorTime() const {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(_process, &clock) != 0 || ::clock_gettime(clock, &used) != 0)
        return {};
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

DecoderHelper::Outcome DecoderHelper::outcomeOfEnd() {
    const auto status = end(killPatience);
    if (!status || !WIFSIGNALED(*status)) return Outcome::Lost;
    switch (WTERMSIG(*status)) {
    case SIGABRT:
    case SIGFPE:
    case SIGILL:
    case SIGSEGV:
    case SIGSYS:
    case SIGTRAP:
        return Outcome::Crashed;
    default:
        // SIGBUS too: the file was cut short, or its disk failed, while it was being read.
        return Outcome::Lost;
    }
}

std::span<const char> DecoderHelper::smallResult() const {
    return {static_cast<const char*>(_results->data()), _results->size()};
}

std::optional<int> DecoderHelper::end(std::chrono::milliseconds patience) {
    if (_process <= 0) return std::nullopt;
    ::kill(_process, SIGKILL);
    return waitForEnd(std::exchange(_process, -1), patience);
}

} // namespace codec::process
