#pragma once

#include "library/SCEvent.h"
#include "platform/files/EventStream.h"
#include "platform/tasks/Mutex.h"

#include <QString>
#include <QStringList>

#include <memory>
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

    /// `awaited` are roots that are not there. False for no paths of either kind, if a stream runs
    /// already, or if the system refuses one. Past changes are not told.
    /// Of those of the paths that are `flat`, only the folder itself is watched.
    bool startWatchingPaths(
        const QStringList& paths, const QStringList& awaited = {}, const QStringList& flat = {});
    /// False if no stream runs.
    bool stopWatchingPaths();
    /// Those of the last successful start.
    [[nodiscard]] QStringList watchedPaths() const;
    [[nodiscard]] QStringList awaitedPaths() const;
    [[nodiscard]] QStringList flatPaths() const;

    /// Has what happened until now delivered; returns when it is on its way to the main thread.
    /// False if no stream runs.
    bool flushEventStreamSync();
    /// The file is new and its writer has not finished: its event is still to come. Any thread.
    [[nodiscard]] bool isBeingWritten(const QString& path) const;

private:
    void take(const std::vector<platform::FileSystemEvent>& events);
    [[nodiscard]] std::shared_ptr<platform::EventStream> eventStream() const;

    SCEventListenerProtocol* _delegate = nullptr;
    platform::EventStream::Options _options; // unchanged from the start on

    /// Held while a stream is made, so that there is one at a time; never while one is asked or
    /// ended, which waits for its thread.
    mutable platform::Mutex _eventsLock;
    std::shared_ptr<platform::EventStream> _eventStream VELMORA_GUARDED_BY(_eventsLock);
    QStringList _watchedPaths VELMORA_GUARDED_BY(_eventsLock);
    QStringList _awaitedPaths VELMORA_GUARDED_BY(_eventsLock);
    QStringList _flatPaths VELMORA_GUARDED_BY(_eventsLock);
};
