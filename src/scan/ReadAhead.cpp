#include "scan/ReadAhead.h"

#include "platform/tasks/Mutex.h"

#include <algorithm>
#include <utility>

namespace {

/// As many as one request for properties holds.
constexpr std::size_t readTogetherAtMost = 16;
/// For each core: enough to keep it busy while the disk pass waits for a transaction to be written.
constexpr std::size_t groupsInHand = 4;

/// Nothing for what is no file that can be read.
std::optional<platform::ResourceValues> valuesOfFile(const QString& path) {
    auto values = platform::FileManager::resourceValues(path);
    if (!values || !values->isRegularFile || !platform::FileManager::isReadable(path))
        return std::nullopt;
    return values;
}

std::unique_ptr<platform::OperationQueue> makeQueue(int threads) {
    return std::make_unique<platform::OperationQueue>(QStringLiteral("read"), threads);
}

} // namespace

NewFile readNewFile(
    const QString& path, std::unique_ptr<PBImageImporterProtocol> importer,
    const std::stop_token& stop) {
    NewFile file{valuesOfFile(path), {}, std::move(importer)};
    if (file.values) file.properties = file.importer->propertiesAtIndex(0, stop);
    return file;
}

struct ReadAhead::Job {
    QString path;
    NewFile file; // until `isRead`, of the thread that reads
    bool isBegun = false;
    platform::Mutex mutex;
    platform::Condition wasRead;
    bool isRead VELMORA_GUARDED_BY(mutex) = false;
};

/// Held by whoever wants one of the files that are read together.
struct ReadAhead::Wish {
    std::stop_source stop;
    Wish() = default;
    Wish(const Wish&) = delete;
    Wish& operator=(const Wish&) = delete;
    ~Wish() { stop.request_stop(); }
};

ReadAhead::ReadAhead(int cores, PBImageImporterManager& importers)
    : _importers(importers),
      _capacity(static_cast<std::size_t>(std::max(1, cores)) * groupsInHand * readTogetherAtMost),
      _threads(std::max(1, cores)), _queue(makeQueue(_threads)) {}

ReadAhead::~ReadAhead() = default;

ReadAhead::Reading
ReadAhead::read(QString path, std::unique_ptr<PBImageImporterProtocol> importer) {
    auto job = std::make_shared<Job>();
    job->path = std::move(path);
    job->file.importer = std::move(importer);
    _gathered.push_back(job);
    if (!_wish) _wish = std::make_shared<Wish>();
    Reading reading(std::move(job), _wish);
    if (_gathered.size() >= readTogetherAtMost) begin();
    return reading;
}

NewFile ReadAhead::wait(Reading reading, const std::stop_token& stop) {
    Job& job = *reading._job;
    if (!job.isBegun) begin();
    platform::Lock lock(job.mutex);
    const bool isRead = job.wasRead.waitUnlessStopped(lock, stop, [&job] {
        job.mutex.assertHeld();
        return job.isRead;
    });
    // One that was not read belongs to the thread that still does.
    return isRead ? std::move(job.file) : NewFile();
}

void ReadAhead::begin() {
    for (const auto& gathered : _gathered) {
        if (const auto job = gathered.lock()) job->isBegun = true;
    }
    leaveStuckBehind();
    const auto wish = std::exchange(_wish, nullptr);
    const auto begun = std::make_shared<Begun>();
    begun->jobs = std::exchange(_gathered, {});
    begun->stop = wish->stop.get_token();
    _begun.push_back(begun);
    _queue->addOperation([begun, &importers = _importers] { readTogether(*begun, importers); });
}

/// A call to a disk that does not answer can't be stopped.
void ReadAhead::leaveStuckBehind() {
    std::erase_if(_begun, [](const auto& begun) { return begun->isRead.load(); });
    std::erase_if(_stuck, [](const auto& queue) { return queue->operationCount() == 0; });
    const bool isAnyUnwanted =
        std::ranges::any_of(_begun, [](const auto& begun) { return begun->stop.stop_requested(); });
    if (!isAnyUnwanted) return;
    _stuck.push_back(std::exchange(_queue, makeQueue(_threads)));
    _begun.clear();
}

void ReadAhead::readTogether(Begun& begun, PBImageImporterManager& importers) {
    std::vector<std::shared_ptr<Job>> wanted;
    std::vector<QString> readable;
    std::vector<NewFile*> files;
    for (const auto& waiting : begun.jobs) {
        auto job = waiting.lock();
        if (!job) continue;
        NewFile& file = job->file;
        file.values = valuesOfFile(job->path);
        if (file.values) {
            readable.push_back(job->path);
            files.push_back(&file);
        }
        wanted.push_back(std::move(job));
    }
    auto properties = importers.propertiesOfImages(readable, begun.stop);
    for (std::size_t index = 0; index < files.size(); ++index)
        files[index]->properties = std::move(properties[index]);
    begun.isRead = true;
    for (const auto& job : wanted) {
        const platform::Lock lock(job->mutex);
        job->isRead = true;
        job->wasRead.notifyOne();
    }
}
