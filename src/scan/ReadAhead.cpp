#include "scan/ReadAhead.h"

#include <algorithm>
#include <atomic>
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

} // namespace

NewFile readNewFile(const QString& path, std::unique_ptr<PBImageImporterProtocol> importer) {
    NewFile file{valuesOfFile(path), {}, std::move(importer)};
    if (file.values) file.properties = file.importer->propertiesAtIndex(0).value_or(PBDictionary());
    return file;
}

struct ReadAhead::Job {
    QString path;
    NewFile file; // until `isRead`, of the thread that reads
    bool isBegun = false;
    std::atomic<bool> isRead = false;
};

ReadAhead::ReadAhead(int cores, PBImageImporterManager& importers)
    : _importers(importers),
      _capacity(static_cast<std::size_t>(std::max(1, cores)) * groupsInHand * readTogetherAtMost),
      _queue(QStringLiteral("read"), std::max(1, cores)) {}

ReadAhead::~ReadAhead() = default;

ReadAhead::Reading
ReadAhead::read(QString path, std::unique_ptr<PBImageImporterProtocol> importer) {
    auto job = std::make_shared<Job>();
    job->path = std::move(path);
    job->file.importer = std::move(importer);
    _gathered.push_back(job);
    if (_gathered.size() >= readTogetherAtMost) begin();
    return Reading(std::move(job));
}

NewFile ReadAhead::wait(Reading reading) {
    Job& job = *reading._job;
    if (!job.isBegun) begin();
    job.isRead.wait(false);
    return std::move(job.file);
}

void ReadAhead::begin() {
    for (const auto& gathered : _gathered) {
        if (const auto job = gathered.lock()) job->isBegun = true;
    }
    _queue.addOperation([jobs = std::exchange(_gathered, {}), &importers = _importers] {
        readTogether(jobs, importers);
    });
}

void ReadAhead::readTogether(const Jobs& jobs, PBImageImporterManager& importers) {
    std::vector<std::shared_ptr<Job>> wanted;
    std::vector<QString> readable;
    std::vector<NewFile*> files;
    for (const auto& waiting : jobs) {
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
    auto properties = importers.propertiesOfImages(readable);
    for (std::size_t index = 0; index < files.size(); ++index)
        files[index]->properties = std::move(properties[index]).value_or(PBDictionary());
    for (const auto& job : wanted) {
        job->isRead = true;
        job->isRead.notify_one();
    }
}
