#include "catalogue/PBCleanThumbOperation.h"

#include "FMDB/FMDatabase.h"

#include <QFile>

#include <chrono>
#include <utility>

namespace {

/// Whoever writes the catalogue has the right of way.
constexpr std::chrono::milliseconds longestWait(10);

} // namespace

PBCleanThumbOperation::PBCleanThumbOperation(
    std::shared_ptr<ThumbnailCleaning> cleaning, QString filesPath, FMDatabase& thumbnails,
    Ended ended)
    : _cleaning(std::move(cleaning)), _filesPath(std::move(filesPath)), _thumbnails(thumbnails),
      _ended(std::move(ended)) {
    setQueuePriority(platform::QueuePriority::VeryLow);
}

ThumbnailCleaning::Outcome PBCleanThumbOperation::step() const {
    // Opening would make a file that is not there.
    FMDatabase files(_filesPath);
    if (!QFile::exists(_filesPath) || !files.open()) return ThumbnailCleaning::Outcome::Unknown;
    files.setLongestWait(longestWait);
    return _cleaning->step(files, _thumbnails);
}

void PBCleanThumbOperation::main() {
    const auto outcome = step();
    if (_ended && !isCancelled()) _ended(outcome);
}
