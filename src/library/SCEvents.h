#pragma once

#include "library/SCEvent.h"
#include "platform/EventStream.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>
#include <optional>
#include <span>

class SCEvents;

class SCEventListenerProtocol {
public:
    virtual ~SCEventListenerProtocol() = default;
    /// A batch of changes, never empty. Main thread.
    virtual void pathWatcher(SCEvents& watcher, std::span<const SCEvent> eventArrayOccurred) = 0;
};

/// One event stream over all folder roots. May be started and stopped on any thread; batches come
/// on the main thread, where the object is made and destroyed.
class SCEvents {
public:
    explicit SCEvents(platform::EventStream::Options options = {});
    SCEvents(const SCEvents&) = delete;
    SCEvents& operator=(const SCEvents&) = delete;
    ~SCEvents();

    /// Not owned; set before the first start.
    void setDelegate(SCEventListenerProtocol* delegate) { _delegate = delegate; }
    /// Leaves out the events of these paths, and with `ignoreEventsFromSubDirs` of all that begins
    /// with one of them. Set before the first start.
    void setExcludedPaths(const QStringList& excludedPaths) { _excludedPaths = excludedPaths; }
    void setIgnoreEventsFromSubDirs(bool ignore) { _ignoreEventsFromSubDirs = ignore; }

    /// False for no paths, if a stream runs already, or if the system refuses one. Past changes are
    /// not told.
    bool startWatchingPaths(const QStringList& paths);
    /// False if no stream runs.
    bool stopWatchingPaths();
    [[nodiscard]] bool isWatchingPaths() const;
    /// Those of the last successful start.
    [[nodiscard]] QStringList watchedPaths() const;
    /// The last event of the last batch, unless it was left out.
    [[nodiscard]] std::optional<SCEvent> lastEvent() const;

    /// False if no stream runs.
    bool flushEventStreamSync();
    bool flushEventStreamAsync();
    /// The file is new and its writer has not finished: its event is still to come. Any thread.
    [[nodiscard]] bool isBeingWritten(const QString& path) const;

    [[nodiscard]] QString description() const;

private:
    void take(const std::vector<platform::FileSystemEvent>& events);
    [[nodiscard]] bool isExcluded(const QString& path) const;

    SCEventListenerProtocol* _delegate = nullptr;
    const platform::EventStream::Options _options;
    bool _ignoreEventsFromSubDirs = true;
    QStringList _excludedPaths;

    mutable std::recursive_mutex _eventsLock; // guards start, stop, flush and the stream
    std::unique_ptr<platform::EventStream> _eventStream;

    mutable std::mutex _stateLock; // guards the two below
    QStringList _watchedPaths;
    std::optional<SCEvent> _lastEvent;
};
