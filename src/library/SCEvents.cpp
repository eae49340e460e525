#include "library/SCEvents.h"

#include "platform/files/GrowingFiles.h"
#include "platform/tasks/MainThread.h"

#include <utility>

SCEvents::SCEvents(platform::EventStream::Options options) : _options(std::move(options)) {
    platform::assertMainThread();
    // A change of the roots must not cost a file that is being written its event.
    if (!_options.growing) _options.growing = std::make_shared<platform::GrowingFiles>();
}

SCEvents::~SCEvents() {
    platform::assertMainThread();
    _delegate = nullptr;
    stopWatchingPaths();
}

bool SCEvents::startWatchingPaths(
    const QStringList& paths, const QStringList& awaited, const QStringList& flat) {
    const platform::Lock lock(_eventsLock);
    if ((paths.isEmpty() && awaited.isEmpty()) || _eventStream) return false;
    platform::EventStream::Options options = _options;
    options.awaited = awaited;
    options.flat = flat;
    auto stream = std::make_shared<platform::EventStream>(
        paths, [this](const std::vector<platform::FileSystemEvent>& events) { take(events); },
        std::move(options));
    if (!stream->isValid()) return false;
    _eventStream = std::move(stream);
    _watchedPaths = paths;
    _awaitedPaths = awaited;
    _flatPaths = flat;
    return true;
}

bool SCEvents::stopWatchingPaths() {
    std::shared_ptr<platform::EventStream> stream;
    const platform::Lock lock(_eventsLock);
    stream.swap(_eventStream);
    return stream != nullptr;
}

QStringList SCEvents::watchedPaths() const {
    const platform::Lock lock(_eventsLock);
    return _watchedPaths;
}

QStringList SCEvents::awaitedPaths() const {
    const platform::Lock lock(_eventsLock);
    return _awaitedPaths;
}

QStringList SCEvents::flatPaths() const {
    const platform::Lock lock(_eventsLock);
    return _flatPaths;
}

std::shared_ptr<platform::EventStream> SCEvents::eventStream() const {
    const platform::Lock lock(_eventsLock);
    return _eventStream;
}

bool SCEvents::flushEventStreamSync() {
    const auto stream = eventStream();
    if (stream) stream->flushSync();
    return stream != nullptr;
}

bool SCEvents::isBeingWritten(const QString& path) const {
    const auto stream = eventStream();
    return stream && stream->isBeingWritten(path);
}

void SCEvents::take(const std::vector<platform::FileSystemEvent>& events) {
    platform::assertMainThread();
    std::vector<SCEvent> taken;
    taken.reserve(events.size());
    for (const auto& event : events)
        taken.emplace_back(event.path, event.flags, event.movedTo);
    if (!taken.empty() && _delegate) _delegate->pathWatcher(*this, taken);
}
