#pragma once

#include "codec/PBImageImporterManager.h"
#include "platform/files/FileManager.h"
#include "platform/tasks/OperationQueue.h"

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

/// What the disk says of a new file, and what its importer reads of it without decoding.
struct NewFile {
    /// Nothing for what is no file that can be read. Asked for before the content is read: what
    /// changes in between is noticed by the next scan.
    std::optional<platform::ResourceValues> values;
    codec::PictureProperties properties;
    std::unique_ptr<PBImageImporterProtocol> importer;
};

/// Blocks as long as the disk does, and the importer unless it is stopped.
[[nodiscard]] NewFile readNewFile(
    const QString& path, std::unique_ptr<PBImageImporterProtocol> importer,
    const std::stop_token& stop);

/// Reads the files that are next in line for the disk pass on cores of their own, while the pass
/// itself stays serial. A few are read together, since a small file takes less time than asking for
/// it. On one thread.
class ReadAhead {
    struct Job;
    struct Wish;

public:
    /// A file that is being read, or waits to be. One that nobody holds any more is not begun, and
    /// those that are being read together are stopped when nobody holds any of them.
    class Reading {
    public:
        Reading() = default;
        [[nodiscard]] bool isValid() const { return _job != nullptr; }

    private:
        friend class ReadAhead;
        Reading(std::shared_ptr<Job> job, std::shared_ptr<Wish> wish)
            : _job(std::move(job)), _wish(std::move(wish)) {}
        std::shared_ptr<Job> _job;
        std::shared_ptr<Wish> _wish;
    };

    /// The manager that the files' importers were made by; it outlives this.
    ReadAhead(int cores, PBImageImporterManager& importers);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// How many files are worth having in hand.
    [[nodiscard]] std::size_t capacity() const { return _capacity; }
    [[nodiscard]] Reading read(QString path, std::unique_ptr<PBImageImporterProtocol> importer);
    /// Blocks until the file is read. Stopped, it answers nothing, and whatever holds the reading
    /// up is not waited for, nor by what is read next.
    [[nodiscard]] NewFile wait(Reading reading, const std::stop_token& stop);

private:
    using Jobs = std::vector<std::weak_ptr<Job>>;
    /// Jobs that a thread has, or is about to get.
    struct Begun {
        Jobs jobs;
        std::stop_token stop;
        std::atomic<bool> isRead = false;
    };

    void begin();
    void leaveStuckBehind();
    static void readTogether(Begun& begun, PBImageImporterManager& importers);

    PBImageImporterManager& _importers;
    const std::size_t _capacity;
    Jobs _gathered;              ///< not begun yet
    std::shared_ptr<Wish> _wish; ///< of those
    std::vector<std::shared_ptr<const Begun>> _begun;
    const int _threads;
    std::unique_ptr<platform::OperationQueue> _queue;
    /// Whose threads stand in the kernel for files that nobody wants any more.
    std::vector<std::unique_ptr<platform::OperationQueue>> _stuck;
};
