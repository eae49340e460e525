#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace platform {

/// Runs work that may hang (a server that is gone, a disk that has to spin up) on threads of its
/// own, and waits for it no longer than the caller can afford. What was not there in time is
/// delivered when it is.
///
/// Work is sorted into lanes, one for each thing that can hang by itself, such as a volume; the
/// work of a lane runs in order. While a lane is late, calls into it don't wait at all, so that
/// twenty folders on a dead server cost one wait.
///
/// Used from one thread, to which `post` leads; `work` runs elsewhere and must own what it uses.
class BoundedCalls {
    struct Job;

public:
    using Post = std::function<void(std::function<void()>)>;
    /// How long is really waited where a limit was promised.
    using WaitFor = std::function<std::chrono::milliseconds(std::chrono::milliseconds limit)>;

    /// How long the end waits for work that is running. Work that hangs hangs for minutes; all
    /// other work is done by then.
    static constexpr std::chrono::milliseconds farewell{500};

    /// `post` takes a function from any thread and runs it on the owner's, never within the call;
    /// without it that is the main thread, as long as there is a main loop. Without `waitFor`,
    /// limits are waited for as they were promised.
    explicit BoundedCalls(Post post = {}, WaitFor waitFor = {});
    BoundedCalls(const BoundedCalls&) = delete;
    BoundedCalls& operator=(const BoundedCalls&) = delete;
    /// Drops waiting work and late answers. Waits for running work, at most for the farewell; a
    /// thread that still stands in the kernel then is left behind: it owns all that it touches, and
    /// ends with the process.
    ~BoundedCalls();

    /// The work's result if it is there within the limit; else nothing, and `late` is called with
    /// the result when it comes. `job` names the work within its lane: where a late lane already
    /// has waiting work of that name, the new one takes its place.
    template <typename Result>
    [[nodiscard]] std::optional<Result> call(
        const QString& lane, const QString& job, std::chrono::milliseconds limit,
        std::function<Result()> work, std::function<void(Result)> late) {
        auto result = std::make_shared<std::optional<Result>>();
        const bool inTime = run(
            lane, job, limit, [result, work = std::move(work)] { result->emplace(work()); },
            [result, late = std::move(late)] {
                if (late) late(std::move(**result));
            });
        if (!inTime) return std::nullopt;
        return std::move(*result);
    }

    /// Until when a limit from now lasts: several calls that were begun together share it.
    using Deadline = std::chrono::steady_clock::time_point;
    [[nodiscard]] Deadline deadline(std::chrono::milliseconds limit) const;

    /// A call that was begun and is not waited for yet. Without `take`, its result is lost.
    template <typename Result>
    class Begun {
        friend class BoundedCalls;
        std::shared_ptr<Job> _job;
        std::shared_ptr<std::optional<Result>> _result;
    };
    /// The first half of a `call`: so several lanes work at the same time.
    template <typename Result>
    [[nodiscard]] Begun<Result> begin(
        const QString& lane, const QString& job, std::function<Result()> work,
        std::function<void(Result)> late) {
        Begun<Result> begun;
        begun._result = std::make_shared<std::optional<Result>>();
        begun._job = start(
            lane, job, OnLateLane::WaitAsWell,
            [result = begun._result, work = std::move(work)] { result->emplace(work()); },
            [result = begun._result, late = std::move(late)] {
                if (late) late(std::move(**result));
            });
        return begun;
    }
    /// The second half: the result if it is there by then.
    template <typename Result>
    [[nodiscard]] std::optional<Result> take(const Begun<Result>& begun, Deadline end) {
        if (!await(*begun._job, end)) return std::nullopt;
        return std::move(*begun._result);
    }

    /// A factor for the limits of all calls of this process that have no `WaitFor` of their own,
    /// for where answers come late because the machine is overloaded: the tests of the whole
    /// program, which can't reach the object. Any thread.
    static void setPatience(int factor);

    /// Whether anything waits or runs.
    [[nodiscard]] bool hasWork() const;

private:
    struct State;
    struct Lane;

    enum class OnLateLane { WaitAsWell, DoNotWait };

    bool
    run(const QString& lane, const QString& job, std::chrono::milliseconds limit,
        std::function<void()> work, std::function<void()> late);
    [[nodiscard]] std::shared_ptr<Job> start(
        const QString& lane, const QString& job, OnLateLane onLateLane, std::function<void()> work,
        std::function<void()> late);
    [[nodiscard]] bool await(Job& job, Deadline end);
    static void workLane(const std::shared_ptr<State>& state, const std::shared_ptr<Lane>& lane);

    std::shared_ptr<State> _state;
};

} // namespace platform
