#include "platform/BoundedCalls.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace platform {

namespace {

/// How long the end waits for work that is running. Work that hangs hangs for minutes; all other
/// work is done by then.
constexpr std::chrono::milliseconds farewell{500};

std::atomic<int> patience = 1;

} // namespace

struct BoundedCalls::Job {
    QString name;
    std::function<void()> work;
    std::function<void()> late;
    bool isDone = false;
    bool isAwaited = true; // the caller still waits; else the answer is delivered by `late`
};

struct BoundedCalls::Lane {
    std::deque<std::shared_ptr<Job>> jobs; // the first one runs
    bool isWorking = false;
};

struct BoundedCalls::State {
    explicit State(Post function) : post(std::move(function)) {}

    const Post post;
    std::mutex mutex; // guards all below
    std::condition_variable changed;
    std::map<QString, std::shared_ptr<Lane>> lanes;
    int working = 0; // threads
    bool isEnding = false;
};

void BoundedCalls::setPatience(int factor) {
    patience = factor;
}

BoundedCalls::BoundedCalls(Post post) : _state(std::make_shared<State>(std::move(post))) {}

BoundedCalls::~BoundedCalls() {
    std::unique_lock lock(_state->mutex);
    _state->isEnding = true;
    for (auto& [name, lane] : _state->lanes) {
        if (lane->jobs.size() > 1) lane->jobs.resize(1);
    }
    _state->changed.wait_for(lock, farewell, [&] { return _state->working == 0; });
}

bool BoundedCalls::hasWork() const {
    const std::lock_guard lock(_state->mutex);
    return _state->working > 0;
}

bool BoundedCalls::isLate(const QString& lane) const {
    const std::lock_guard lock(_state->mutex);
    const auto found = _state->lanes.find(lane);
    if (found == _state->lanes.end()) return false;
    return std::ranges::any_of(
        found->second->jobs, [](const auto& job) { return !job->isAwaited; });
}

bool BoundedCalls::run(
    const QString& laneName, const QString& jobName, std::chrono::milliseconds limit,
    std::function<void()> work, std::function<void()> late) {
    const auto job = std::make_shared<Job>();
    job->name = jobName;
    job->work = std::move(work);
    job->late = std::move(late);

    std::unique_lock lock(_state->mutex);
    auto& lane = _state->lanes[laneName];
    if (!lane) lane = std::make_shared<Lane>();
    const bool isLaneLate = !lane->jobs.empty();
    if (isLaneLate) {
        // The first one runs and can't be changed any more.
        const auto same =
            std::find_if(lane->jobs.begin() + 1, lane->jobs.end(), [&](const auto& waiting) {
                return waiting->name == jobName;
            });
        job->isAwaited = false;
        if (same != lane->jobs.end()) {
            *same = job;
        } else {
            lane->jobs.push_back(job);
        }
        return false;
    }
    lane->jobs.push_back(job);
    if (!lane->isWorking) {
        lane->isWorking = true;
        ++_state->working;
        // Not joined: see the destructor. The thread shares the state and touches nothing else.
        std::thread(&BoundedCalls::workLane, _state, lane).detach();
    }
    _state->changed.wait_for(lock, limit * patience.load(), [&] { return job->isDone; });
    job->isAwaited = job->isDone;
    return job->isDone;
}

void BoundedCalls::workLane(
    const std::shared_ptr<State>& state, const std::shared_ptr<Lane>& lane) {
    std::unique_lock lock(state->mutex);
    while (!lane->jobs.empty()) {
        const std::shared_ptr<Job> job = lane->jobs.front();
        lock.unlock();
        job->work();
        lock.lock();
        lane->jobs.pop_front();
        job->isDone = true;
        if (!job->isAwaited && !state->isEnding) {
            // The state is looked at again when the call comes out: its owner may be gone then.
            state->post([weak = std::weak_ptr(state), late = std::move(job->late)] {
                const auto alive = weak.lock();
                if (!alive) return;
                {
                    const std::lock_guard check(alive->mutex);
                    if (alive->isEnding) return;
                }
                late();
            });
        }
        job->work = nullptr;
        state->changed.notify_all();
    }
    lane->isWorking = false;
    --state->working;
    state->changed.notify_all();
}

} // namespace platform
