#include "platform/tasks/BoundedCalls.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/Mutex.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <map>
#include <thread>

namespace platform {

namespace {

std::atomic<int> patience = 1;

void postToMainLoop(std::function<void()> function) {
    if (auto* loop = MainLoop::instance()) loop->post(MainLoop::Mode::Common, std::move(function));
}

} // namespace

/// Jobs and lanes are reached by the mutex of the state only; the work runs without it.
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
    State(Post function, WaitFor wait) : post(std::move(function)), waitFor(std::move(wait)) {}

    const Post post;
    const WaitFor waitFor;
    Mutex mutex;
    Condition changed;
    std::map<QString, std::shared_ptr<Lane>> lanes VELMORA_GUARDED_BY(mutex);
    int working VELMORA_GUARDED_BY(mutex) = 0; // threads
    bool isEnding VELMORA_GUARDED_BY(mutex) = false;
};

void BoundedCalls::setPatience(int factor) {
    patience = factor;
}

BoundedCalls::BoundedCalls(Post post, WaitFor waitFor)
    : _state(std::make_shared<State>(
          post ? std::move(post) : Post(&postToMainLoop), std::move(waitFor))) {}

BoundedCalls::~BoundedCalls() {
    const auto wait = _state->waitFor ? _state->waitFor(farewell) : farewell;
    Lock lock(_state->mutex);
    _state->isEnding = true;
    for (auto& [name, lane] : _state->lanes) {
        if (lane->jobs.size() > 1) lane->jobs.resize(1);
    }
    _state->changed.waitFor(lock, wait, [this] {
        _state->mutex.assertHeld();
        return _state->working == 0;
    });
}

bool BoundedCalls::hasWork() const {
    const Lock lock(_state->mutex);
    return _state->working > 0;
}

BoundedCalls::Deadline BoundedCalls::deadline(std::chrono::milliseconds limit) const {
    return std::chrono::steady_clock::now() +
           (_state->waitFor ? _state->waitFor(limit) : limit * patience.load());
}

bool BoundedCalls::run(
    const QString& lane, const QString& job, std::chrono::milliseconds limit,
    std::function<void()> work, std::function<void()> late) {
    const Deadline end = deadline(limit);
    return await(*start(lane, job, OnLateLane::DoNotWait, std::move(work), std::move(late)), end);
}

std::shared_ptr<BoundedCalls::Job> BoundedCalls::start(
    const QString& laneName, const QString& jobName, OnLateLane onLateLane,
    std::function<void()> work, std::function<void()> late) {
    auto job = std::make_shared<Job>();
    job->name = jobName;
    job->work = std::move(work);
    job->late = std::move(late);

    const Lock lock(_state->mutex);
    auto& lane = _state->lanes[laneName];
    if (!lane) lane = std::make_shared<Lane>();
    if (!lane->jobs.empty()) {
        job->isAwaited = onLateLane == OnLateLane::WaitAsWell;
        // The first one runs and can't be changed any more.
        const auto same =
            std::find_if(lane->jobs.begin() + 1, lane->jobs.end(), [&](const auto& waiting) {
                return waiting->name == jobName;
            });
        if (same != lane->jobs.end()) {
            *same = job;
        } else {
            lane->jobs.push_back(job);
        }
        return job;
    }
    lane->jobs.push_back(job);
    if (!lane->isWorking) {
        lane->isWorking = true;
        ++_state->working;
        // Not joined: see the destructor. The thread shares the state and touches nothing else.
        std::thread(&BoundedCalls::workLane, _state, lane).detach();
    }
    return job;
}

bool BoundedCalls::await(Job& job, Deadline end) {
    Lock lock(_state->mutex);
    if (!job.isAwaited) return false;
    _state->changed.waitUntil(lock, end, [&] { return job.isDone; });
    job.isAwaited = job.isDone;
    return job.isDone;
}

void BoundedCalls::workLane(
    const std::shared_ptr<State>& state, const std::shared_ptr<Lane>& lane) {
    Lock lock(state->mutex);
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
                    const Lock check(alive->mutex);
                    if (alive->isEnding) return;
                }
                late();
            });
        }
        job->work = nullptr;
        state->changed.notifyAll();
    }
    lane->isWorking = false;
    --state->working;
    state->changed.notifyAll();
}

} // namespace platform
