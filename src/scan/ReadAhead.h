#pragma once

#include "image/ImageImporters.h"
#include "platform/FileManager.h"
#include "platform/OperationQueue.h"

#include <future>
#include <memory>
#include <optional>

/// What the disk says of a new file, and what its importer reads of it without decoding.
struct NewFile {
    /// Nothing for what is no file that can be read. Asked for before the content is read: what
    /// changes in between is noticed by the next scan.
    std::optional<platform::ResourceValues> values;
    PBDictionary properties; ///< empty if they can't be read
    std::unique_ptr<image::ImageImporter> importer;
};

/// Blocks as long as the disk and the importer do.
[[nodiscard]] NewFile
readNewFile(const QString& path, std::unique_ptr<image::ImageImporter> importer);

/// Reads the files that are next in line for the disk pass on cores of their own, while the pass
/// itself stays serial. Any thread.
class ReadAhead {
public:
    explicit ReadAhead(int cores);

    /// How many files are worth having in hand.
    [[nodiscard]] std::size_t capacity() const { return _capacity; }
    [[nodiscard]] std::future<NewFile>
    read(QString path, std::unique_ptr<image::ImageImporter> importer);

private:
    const std::size_t _capacity;
    platform::OperationQueue _queue;
};
