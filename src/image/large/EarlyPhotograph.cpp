#include "image/large/EarlyPhotograph.h"

#include "core/Angles.h"
#include "image/large/LoadRequests.h"
#include "platform/tasks/MainLoop.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>
#include <utility>

using platform::MainLoop;

namespace {

/// Between two looks at whether those who wait still want it.
constexpr std::chrono::milliseconds lookInterval{5};

int longerSide(const QImage& image) {
    return std::max(image.width(), image.height());
}

bool plays(
    PBImageImporterProtocol& importer, const codec::DecodeRequest& request,
    const std::stop_token& stop) {
    if (!LoadRequests::mayPlay(importer.utiType())) return false;
    const codec::OpenedSequence opened = importer.openSequence(request, stop);
    return opened.sequence && opened.sequence->isAnimation();
}

double orientationOf(const PBDictionary& properties) {
    const PBDictionary* tiff = valueForKey(properties, QStringLiteral("{TIFF}")).dictionary();
    if (!tiff) return 0;
    const qint64 orientation = valueForKey(*tiff, QStringLiteral("Orientation")).toInteger();
    return PBUtilities::orientationToAngle(static_cast<int>(orientation));
}

} // namespace

struct EarlyPhotograph::Work {
    QString path;
    codec::DecodeRequest request;
    /// Set by the decoding thread before the picture is there.
    platform::ResourceValues values;
    std::promise<codec::ReadResult> decoded;
    std::future<codec::ReadResult> picture = decoded.get_future();
    std::atomic<bool> isTaken = false;

    platform::Mutex mutex;
    std::optional<Seen> seen VELMORA_GUARDED_BY(mutex);
    Observer observer VELMORA_GUARDED_BY(mutex);

    /// Size and colours are those.
    [[nodiscard]] bool isFor(const codec::DecodeRequest& wanted) const {
        // A scale went there and back.
        return wanted.targetProfile == request.targetProfile &&
               std::abs(wanted.maxSize - request.maxSize) <= 1;
    }

    /// The thread holds no share of the work any more.
    const std::shared_ptr<std::atomic<bool>> hasEnded = std::make_shared<std::atomic<bool>>(false);

    // Last: it uses what is above.
    std::jthread thread;

    /// On the main thread, as soon as there is both.
    static void tell(const std::shared_ptr<Work>& work) {
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(MainLoop::Mode::Common, [weak = std::weak_ptr(work)] {
            const auto told = weak.lock();
            if (!told) return;
            Observer listener;
            std::optional<Seen> found;
            {
                const platform::Lock lock(told->mutex);
                if (!told->seen) return;
                found = told->seen;
                listener = std::exchange(told->observer, {});
            }
            if (listener) listener(*found);
        });
    }
};

EarlyPhotograph& EarlyPhotograph::shared() {
    static EarlyPhotograph early;
    return early;
}

EarlyPhotograph::EarlyPhotograph() = default;

EarlyPhotograph::~EarlyPhotograph() {
    finish();
}

std::shared_ptr<EarlyPhotograph::Work> EarlyPhotograph::workOn(const QString& path) const {
    const platform::Lock lock(_mutex);
    return _work && _work->path == path ? _work : nullptr;
}

void EarlyPhotograph::forget() {
    const platform::Lock lock(_mutex);
    // Their threads are at their end: nobody waits for them.
    std::erase_if(_ending, [](const auto& work) { return work->hasEnded->load(); });
    if (!_work) return;
    _work->thread.request_stop();
    _ending.push_back(std::exchange(_work, nullptr));
}

void EarlyPhotograph::finish() {
    forget();
    std::vector<std::shared_ptr<Work>> ending;
    {
        const platform::Lock lock(_mutex);
        ending.swap(_ending);
    }
    for (const auto& work : ending)
        if (work->thread.joinable()) work->thread.join();
}

void EarlyPhotograph::begin(const QString& path, const LargeImageScreen& screen) {
    codec::DecodeRequest request = LoadRequests::make(screen.fitInSide(), screen.colorSpace);
    request.urgency = codec::Urgency::Focus;
    if (const auto begun = workOn(path); begun && begun->isFor(request)) return;
    forget();
    auto work = std::make_shared<Work>();
    work->path = path;
    work->request = std::move(request);
    const platform::Lock lock(_mutex);
    _work = work;
    // The last share is never the thread's own: the work joins it.
    work->thread = std::jthread(
        [this, mine = work, hasEnded = work->hasEnded](const std::stop_token& stop) mutable {
            // One after the other: a second decoder takes longer to come up than to be waited for.
            read(mine, stop);
            decode(mine, stop);
            mine.reset();
            *hasEnded = true;
        });
}

void EarlyPhotograph::decode(const std::shared_ptr<Work>& work, const std::stop_token& stop) {
    codec::ReadResult result;
    result.status = codec::ReadStatus::NotNow;
    work->values = platform::FileManager::look(work->path).values;
    if (const auto importer = _importers.imageImporterForImageURL(work->path)) {
        importer->setUrgency(work->request.urgency);
        if (!plays(*importer, work->request, stop))
            result = importer->readImage(work->request, stop);
    }
    work->decoded.set_value(std::move(result));
}

void EarlyPhotograph::read(const std::shared_ptr<Work>& work, const std::stop_token& stop) {
    const platform::EntryLook looked = platform::FileManager::look(work->path);
    const auto importer = _importers.imageImporterForImageURL(work->path);
    if (!importer || looked.presence != platform::Presence::There) return;
    importer->setUrgency(codec::Urgency::Focus);
    const auto properties = importer->propertiesAtIndex(0, stop).ifRead();
    if (!properties) return;
    const auto side = [&](const QString& key) {
        return static_cast<double>(valueForKey(*properties, key).toInteger());
    };
    Seen seen{
        looked.values,
        QSizeF(side(QStringLiteral("PixelWidth")), side(QStringLiteral("PixelHeight"))),
        orientationOf(*properties)};
    if (seen.imageSize.isEmpty()) return;
    {
        const platform::Lock lock(work->mutex);
        work->seen = seen;
        if (!work->observer) return;
    }
    Work::tell(work);
}

void EarlyPhotograph::observe(const QString& path, Observer observer) {
    const auto work = workOn(path);
    if (!work) return;
    const platform::Lock lock(work->mutex);
    work->observer = std::move(observer);
    if (work->seen) Work::tell(work);
}

std::optional<codec::ReadResult> EarlyPhotograph::take(
    const QString& path, quint64 fileSize, double modificationDate,
    const codec::DecodeRequest& request, std::stop_token stop) {
    const auto work = workOn(path);
    const bool isFull = request.maxSize == 0;
    codec::DecodeRequest wanted = request;
    if (isFull && work) wanted.maxSize = work->request.maxSize;
    if (!work || !work->isFor(wanted)) return std::nullopt;
    if (work->isTaken.exchange(true)) return std::nullopt;
    while (work->picture.wait_for(lookInterval) != std::future_status::ready) {
        if (!stop.stop_requested()) continue;
        work->isTaken = false; // for whoever asks next
        return std::nullopt;
    }
    const auto& values = work->values;
    const bool isSame = static_cast<quint64>(values.fileSize) == fileSize &&
                        values.modificationDate == modificationDate;
    codec::ReadResult result = work->picture.get();
    if (!isSame || result.frame.image.isNull()) return std::nullopt;
    if (isFull && longerSide(result.frame.image) >= work->request.maxSize) return std::nullopt;
    return result;
}
