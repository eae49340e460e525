#include "platform/files/EventStream.h"

#include "platform/files/GrowingFiles.h"
#include "platform/files/InotifyTree.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/Mutex.h"

#include <QFile>
#include <QHash>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

namespace {

/// The events of one batch, joined by path and kind, in the order in which their paths first came.
class EventBatch {
public:
    void
    add(const QByteArray& path, std::uint32_t flags, const QByteArray& movedTo = QByteArray()) {
        const std::pair key(path, (flags & EventItemIsDir) != 0);
        if (const auto known = _places.constFind(key); known != _places.cend()) {
            FileSystemEvent& event = _events[*known];
            event.flags |= flags;
            if (!movedTo.isEmpty()) event.movedTo = QFile::decodeName(movedTo);
            return;
        }
        _places.insert(key, _events.size());
        _events.push_back({0, QFile::decodeName(path), flags, QFile::decodeName(movedTo)});
    }
    [[nodiscard]] bool isEmpty() const { return _events.empty(); }
    [[nodiscard]] std::vector<FileSystemEvent> take() {
        _places.clear();
        return std::exchange(_events, {});
    }

private:
    QHash<std::pair<QByteArray, bool>, std::size_t> _places;
    std::vector<FileSystemEvent> _events;
};

/// Shared with the batches on their way to the main thread.
struct Receiver {
    EventStream::Handler handler;
    std::atomic<bool> isListening{true};
};

QByteArray numberIn(const char* file) {
    QFile limit(QString::fromLatin1(file));
    return limit.open(QIODevice::ReadOnly) ? limit.readAll().trimmed() : QByteArray("unknown");
}

/// The smaller of the user's limit and that of the name space.
QString watchLimit() {
    const QByteArray user = numberIn("/proc/sys/fs/inotify/max_user_watches");
    const QByteArray space = numberIn("/proc/sys/user/max_inotify_watches");
    bool isNumber = false;
    const qlonglong ofSpace = space.toLongLong(&isNumber);
    return isNumber && ofSpace < user.toLongLong()
               ? QStringLiteral("user.max_inotify_watches = %1").arg(ofSpace)
               : QStringLiteral("fs.inotify.max_user_watches = %1").arg(QLatin1StringView(user));
}

std::vector<QByteArray> rootsOf(const QStringList& paths) {
    std::vector<QByteArray> roots;
    for (const QString& path : paths) {
        QByteArray root = QFile::encodeName(path);
        while (root.size() > 1 && root.endsWith('/'))
            root.chop(1);
        if (std::ranges::find(roots, root) == roots.end()) roots.push_back(root);
    }
    return roots;
}

} // namespace

class EventStream::Worker final : private InotifyTree::Sink {
public:
    Worker(const QStringList& paths, Handler handler, Options options)
        : _roots(rootsOf(paths)), _options(std::move(options)), _awaited(rootsOf(_options.awaited)),
          _flat(rootsOf(_options.flat)), _wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          _growing(_options.growing ? _options.growing : std::make_shared<GrowingFiles>()) {
        _receiver->handler = std::move(handler);
        makeTree();
        _isValid = _wake >= 0 && _tree->descriptor() >= 0;
        if (!_isValid) {
            complain(
                QStringLiteral("changes of the watched folders can't be noticed: the limit "
                               "fs.inotify.max_user_instances = %1 is reached")
                    .arg(QLatin1StringView(numberIn("/proc/sys/fs/inotify/max_user_instances"))));
            if (_options.limitReached)
                _options.limitReached(QStringLiteral("fs.inotify.max_user_instances = %1")
                                          .arg(QLatin1StringView(numberIn(
                                              "/proc/sys/fs/inotify/max_user_instances"))));
            return;
        }
        _thread = std::thread([this] {
            pthread_setname_np(pthread_self(), "events");
            run();
        });
    }

    ~Worker() override {
        _receiver->isListening = false;
        _stop.request_stop();
        wake();
        if (_thread.joinable()) _thread.join();
        if (_wake >= 0) ::close(_wake);
    }

    [[nodiscard]] bool isValid() const { return _isValid; }
    [[nodiscard]] bool isBeingWritten(const QByteArray& path) {
        if (!_growing->holdIfWritten(path, EventItemCreated | EventItemIsFile, _options.now()))
            return false;
        wake();
        return true;
    }

    std::uint64_t requestFlush() {
        const Lock lock(_mutex);
        const std::uint64_t request = ++_flushRequested;
        wake();
        return request;
    }
    void waitForFlush(std::uint64_t request) {
        Lock lock(_mutex);
        _flushed.wait(lock, [&] {
            _mutex.assertHeld();
            return _flushDone >= request || _ended;
        });
    }

private:
    using Time = Clock::time_point;

    void makeTree() {
        Sink& sink = *this;
        _tree = std::make_unique<InotifyTree>(sink, _stop.get_token());
    }

    void wake() const {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(_wake, &one, sizeof one);
    }

    void run() {
        _tree->addRoots(_roots, _awaited, _flat);
        startBatch(_options.now());
        while (!_stop.stop_requested()) {
            waitForWork();
            const std::uint64_t flush = flushRequest();
            _tree->readEvents(_options.now());
            if (_overflowed) watchAnew();
            const Time now = _options.now();
            _tree->expireRenames(flush != 0 ? Time::max() : now);
            startBatch(now);
            if (flush != 0 || (_deadline && now >= *_deadline)) deliver(now);
            if (flush != 0) endFlush(flush);
        }
        const Lock lock(_mutex);
        _ended = true;
        _flushed.notifyAll();
    }

    /// Until there is something to read, a deadline passes, or somebody wakes the thread.
    void waitForWork() {
        std::optional<Time> next = _deadline;
        if (const auto expiry = _tree->nextExpiry(); expiry && (!next || *expiry < *next))
            next = expiry;
        int timeout = -1;
        if (next) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - _options.now());
            timeout = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
        }
        std::array<pollfd, 2> descriptors{{{_tree->descriptor(), POLLIN, 0}, {_wake, POLLIN, 0}}};
        ::poll(descriptors.data(), descriptors.size(), timeout);
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t length = ::read(_wake, &count, sizeof count);
    }

    /// A batch is on its way from its first event, or from the first look at a growing file, on.
    void startBatch(Time now) {
        if (!_deadline && (!_batch.isEmpty() || !_growing->isEmpty()))
            _deadline = now + _options.latency;
        if (!std::exchange(_isUrgent, false) || !_deadline) return;
        constexpr std::chrono::milliseconds urgentLatency{100};
        _deadline = std::min(*_deadline, now + urgentLatency);
    }

    void deliver(Time now) {
        for (const auto& file : _growing->takeComplete(now))
            _batch.add(file.path, file.flags);
        std::vector<FileSystemEvent> events = _batch.take();
        _deadline.reset();
        startBatch(now);
        if (events.empty()) return;
        for (FileSystemEvent& event : events)
            event.eventId = ++_lastEventId;
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(
            MainLoop::Mode::Default, [receiver = _receiver, events = std::move(events)]() mutable {
                if (receiver->isListening) receiver->handler(std::move(events));
            });
    }

    std::uint64_t flushRequest() {
        const Lock lock(_mutex);
        return _flushRequested > _flushDone ? _flushRequested : 0;
    }
    void endFlush(std::uint64_t request) {
        const Lock lock(_mutex);
        _flushDone = request;
        _flushed.notifyAll();
    }

    void watchAnew() {
        _overflowed = false;
        complain(QStringLiteral("more changes came at once than the limit "
                                "fs.inotify.max_queued_events = %1 allows; all watched folders are "
                                "looked through again")
                     .arg(QLatin1StringView(numberIn("/proc/sys/fs/inotify/max_queued_events"))));
        makeTree();
        _tree->addRoots(_roots, _awaited, _flat);
        for (const QByteArray& root : _roots)
            mustScan(root);
    }

    void mustScan(const QByteArray& root) {
        _batch.add(root, EventMustScanSubDirs | EventItemRenamed | EventItemIsDir);
    }

    void folderEvent(const QByteArray& path, std::uint32_t flags) override {
        _batch.add(path, flags);
    }
    void folderMoved(const QByteArray& from, const QByteArray& to) override {
        _growing->renameFolder(from, to);
    }
    void fileCreated(const QByteArray& path) override {
        _growing->add(path, EventItemCreated | EventItemIsFile, _options.now());
    }
    void fileClosed(const QByteArray& path) override {
        _growing->wasClosed(path, EventItemModified | EventItemIsFile, _options.now());
    }
    void fileRemoved(const QByteArray& path) override {
        _growing->remove(path);
        _batch.add(path, EventItemRemoved | EventItemIsFile);
    }
    void fileRenamed(const QByteArray& from, const QByteArray& to) override {
        constexpr std::uint32_t flags = EventItemRenamed | EventItemIsFile;
        if (!from.isEmpty()) _batch.add(from, flags);
        if (!from.isEmpty() && !to.isEmpty() && _growing->rename(from, to, flags)) return;
        if (to.isEmpty()) return _growing->remove(from);
        if (from.isEmpty()) _growing->remove(to);
        if (GrowingFiles::lookAtDisk(to).presence != Presence::Gone) _batch.add(to, flags);
    }
    void rootChanged(const QByteArray& path, const QByteArray& movedTo) override {
        _batch.add(path, EventRootChanged, movedTo);
        _isUrgent = true;
    }
    void limitReached(const QByteArray& root) override {
        mustScan(root);
        if (std::exchange(_limitTold, true)) return;
        if (_options.limitReached) _options.limitReached(watchLimit());
        complain(QStringLiteral("no more folders can be watched: the limit %1 is reached; changes "
                                "in some folders below %2 will be seen when they are next selected")
                     .arg(watchLimit(), QFile::decodeName(root)));
    }
    void overflowed() override { _overflowed = true; }

    const std::vector<QByteArray> _roots;
    const Options _options;
    const std::vector<QByteArray> _awaited;
    const std::vector<QByteArray> _flat;
    const std::shared_ptr<Receiver> _receiver = std::make_shared<Receiver>();
    const int _wake;
    bool _isValid = false; // settled before the thread starts
    std::stop_source _stop;

    Mutex _mutex;
    Condition _flushed;
    std::uint64_t _flushRequested VELMORA_GUARDED_BY(_mutex) = 0;
    std::uint64_t _flushDone VELMORA_GUARDED_BY(_mutex) = 0;
    bool _ended VELMORA_GUARDED_BY(_mutex) = false;

    const std::shared_ptr<GrowingFiles> _growing;
    // The rest belongs to the thread.
    std::unique_ptr<InotifyTree> _tree;
    EventBatch _batch;
    std::optional<Time> _deadline;
    std::uint64_t _lastEventId = 0;
    bool _overflowed = false;
    bool _isUrgent = false;
    bool _limitTold = false;

    std::thread _thread;
};

EventStream::EventStream(const QStringList& paths, Handler handler, Options options)
    : _worker(std::make_unique<Worker>(paths, std::move(handler), std::move(options))) {}

EventStream::~EventStream() = default;

bool EventStream::isValid() const {
    return _worker->isValid();
}

void EventStream::flushSync() {
    if (isValid()) _worker->waitForFlush(_worker->requestFlush());
}

bool EventStream::isBeingWritten(const QString& path) {
    return _worker->isBeingWritten(QFile::encodeName(path));
}

} // namespace platform
