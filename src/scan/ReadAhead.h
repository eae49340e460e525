#pragma once

#include "codec/PBImageImporterManager.h"
#include "platform/files/FileManager.h"
#include "platform/work/OperationQueue.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

/// What the disk says of a new file, and what its importer reads of it without decoding.
struct NewFile {
    /// Nothing for what is no file that can be read. Asked for before the content is read: what
    /// changes in between is noticed by the next scan.
    std::optional<platform::ResourceValues> values;
    PBDictionary properties; ///< empty if they can't be read
    std::unique_ptr<PBImageImporterProtocol> importer;
};

/// Blocks as long as the disk and the importer do.
[[nodiscard]] NewFile
readNewFile(const QString& path, std::unique_ptr<PBImageImporterProtocol> importer);

/// Reads the files that are next in line for the disk pass on cores of their own, while the pass
/// itself stays serial. A few are read together, since a small file takes less time than asking for
/// it. On one thread.
class ReadAhead {
    struct Job;

public:
    /// A file that is being read, or waits to be. One that nobody holds any more is not begun.
    class Reading {
    public:
        Reading() = default;
        [[nodiscard]] bool isValid() const { return _job != nullptr; }

    private:
        friend class ReadAhead;
        explicit Reading(std::shared_ptr<Job> job) : _job(std::move(job)) {}
        std::shared_ptr<Job> _job;
    };

    /// The manager that the files' importers were made by; it outlives this.
    ReadAhead(int cores, PBImageImporterManager& importers);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// How many files are worth having in hand.
    [[nodiscard]] std::size_t capacity() const { return _capacity; }
    [[nodiscard]] Reading read(QString path, std::unique_ptr<PBImageImporterProtocol> importer);
    /// Blocks until the file is read.
    [[nodiscard]] NewFile wait(Reading reading);

private:
    using Jobs = std::vector<std::weak_ptr<Job>>;

    void begin();
    static void readTogether(const Jobs& jobs, PBImageImporterManager& importers);

    PBImageImporterManager& _importers;
    const std::size_t _capacity;
    Jobs _gathered; ///< not begun yet
    platform::OperationQueue _queue;
};
