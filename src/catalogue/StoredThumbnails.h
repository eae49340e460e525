#pragma once

#include <QtGlobal>

#include <optional>
#include <unordered_set>
#include <vector>

class FMDatabase;

/// Which of some images have a stored thumbnail: asked for all of them at once, when the first is
/// looked for. One thread at a time.
class StoredThumbnails {
public:
    /// Before the first is looked for.
    void add(qint64 fileId) { _fileIds.push_back(fileId); }
    /// Of one that was added. What was stored or removed since the first look is not noticed; where
    /// the catalogue can't be read, none has one.
    [[nodiscard]] bool contains(FMDatabase& thumbnailDb, qint64 fileId);

private:
    std::vector<qint64> _fileIds;
    std::optional<std::unordered_set<qint64>> _stored;
};
