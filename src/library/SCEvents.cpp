#include "library/SCEvents.h"

#include <algorithm>

SCEvent SCEvent::eventWithEventId(
    std::uint64_t eventId, const QDateTime& eventDate, const QString& eventPath,
    std::uint32_t eventFlags) {
    SCEvent event;
    event._eventId = eventId;
    event._eventDate = eventDate;
    event._eventPath = eventPath;
    if (eventPath.size() >= 2 && eventPath.endsWith(u'/')) event._eventPath.chop(1);
    event._eventFlags = eventFlags;
    return event;
}

QString SCEvent::description() const {
    return QStringLiteral("<SCEvent { eventId = %1, eventPath = %2, eventFlags = %3 } >")
        .arg(QString::number(_eventId), _eventPath, QString::number(_eventFlags));
}

SCEvents::SCEvents(platform::EventStream::Options options) : _options(std::move(options)) {}

SCEvents::~SCEvents() {
    _delegate = nullptr;
    stopWatchingPaths();
}

bool SCEvents::startWatchingPaths(const QStringList& paths) {
    const std::lock_guard lock(_eventsLock);
    if (paths.isEmpty() || _eventStream) return false;
    auto stream = std::make_unique<platform::EventStream>(
        paths, [this](const std::vector<platform::FileSystemEvent>& events) { take(events); },
        _options);
    if (!stream->isValid()) return false;
    _eventStream = std::move(stream);
    const std::lock_guard stateLock(_stateLock);
    _watchedPaths = paths;
    return true;
}

bool SCEvents::stopWatchingPaths() {
    const std::lock_guard lock(_eventsLock);
    const bool wasWatching = _eventStream != nullptr;
    _eventStream.reset();
    return wasWatching;
}

bool SCEvents::isWatchingPaths() const {
    const std::lock_guard lock(_eventsLock);
    return _eventStream != nullptr;
}

QStringList SCEvents::watchedPaths() const {
    const std::lock_guard lock(_stateLock);
    return _watchedPaths;
}

std::optional<SCEvent> SCEvents::lastEvent() const {
    const std::lock_guard lock(_stateLock);
    return _lastEvent;
}

bool SCEvents::flushEventStreamSync() {
    const std::lock_guard lock(_eventsLock);
    if (!_eventStream) return false;
    _eventStream->flushSync();
    return true;
}

bool SCEvents::flushEventStreamAsync() {
    const std::lock_guard lock(_eventsLock);
    if (!_eventStream) return false;
    _eventStream->flushAsync();
    return true;
}

bool SCEvents::isBeingWritten(const QString& path) const {
    const std::lock_guard lock(_eventsLock);
    return _eventStream && _eventStream->isBeingWritten(path);
}

QString SCEvents::description() const {
    return QStringLiteral("<SCEvents { watchedPaths = (%1), excludedPaths = (%2) } >")
        .arg(watchedPaths().join(u", "), _excludedPaths.join(u", "));
}

bool SCEvents::isExcluded(const QString& path) const {
    return std::ranges::any_of(_excludedPaths, [&](const QString& excluded) {
        return path == excluded || (_ignoreEventsFromSubDirs && path.startsWith(excluded));
    });
}

void SCEvents::take(const std::vector<platform::FileSystemEvent>& events) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    std::vector<SCEvent> taken;
    for (const auto& event : events) {
        if (isExcluded(event.path)) continue;
        taken.push_back(SCEvent::eventWithEventId(event.eventId, now, event.path, event.flags));
        if (&event != &events.back()) continue;
        const std::lock_guard lock(_stateLock);
        _lastEvent = taken.back();
    }
    if (!taken.empty() && _delegate) _delegate->pathWatcher(*this, taken);
}
