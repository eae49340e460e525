#pragma once

#include "catalogue/FileRows.h"
#include "group/PBGroupItem.h"
#include "info/rows/GeneralMerge.h"
#include "info/rows/MetadataMerge.h"

#include <functional>
#include <span>

class FMDatabase;

namespace group {
class FolderPaths;
}

/// Reads what the catalogue has of the selected photographs, a few milliseconds at a time, so that
/// ten thousand of them hold up nobody. What was merged so far can be looked at any time; it is
/// exact once the reading is complete. Main thread, with its connection.
class SelectionReading {
public:
    /// Seconds of a clock that never goes back.
    using Clock = std::function<double()>;
    [[nodiscard]] static Clock monotonicClock();
    /// Seconds that one slice takes at most, as long as no batch takes that long alone.
    static constexpr double sliceLength = 0.008;

    virtual ~SelectionReading() = default;
    SelectionReading(const SelectionReading&) = delete;
    SelectionReading& operator=(const SelectionReading&) = delete;

    /// Reads a slice; true when all is read. Nothing further happens after that.
    bool readSome();
    [[nodiscard]] bool isComplete() const { return _hasFailed || _readCount >= _items.size(); }
    /// The catalogue could not be read: nothing can be said.
    [[nodiscard]] bool hasFailed() const { return _hasFailed; }
    [[nodiscard]] const PBImageFileList& items() const { return _items; }

protected:
    using Items = std::span<const std::shared_ptr<PBImageFileItem>>;

    SelectionReading(PBImageFileList items, FMDatabase& database, Clock clock);

    /// At most `FileRows::most` of them; false where they can't be read.
    virtual bool readBatch(Items items, std::span<const qint64> fileIds) = 0;
    /// Further photographs change nothing.
    [[nodiscard]] virtual bool isSettled() const { return false; }

    FMDatabase& _database;

private:
    const PBImageFileList _items;
    const Clock _clock;
    std::size_t _readCount = 0;
    double _longestBatch = 0;
    bool _hasFailed = false;
};

/// For the general page.
class GeneralReading final : public SelectionReading {
public:
    /// The connection and the paths outlive the reading.
    GeneralReading(
        PBImageFileList items, FMDatabase& database, const group::FolderPaths& folderPaths,
        Clock clock = monotonicClock());

    [[nodiscard]] const GeneralMerge& merged() const { return _merged; }
    [[nodiscard]] MergedTags tags() const { return _merged.tags(_tagTexts); }

protected:
    bool readBatch(Items items, std::span<const qint64> fileIds) override;

private:
    /// Of tags that were met since the last call.
    bool readTagTexts();
    [[nodiscard]] GeneralFacts factsOf(const PBImageFileItem& item, const PBArray& row);

    const group::FolderPaths& _folderPaths;
    const FileRows _rows;
    group::FolderPathCache _folderCache;
    GeneralMerge _merged;
    QHash<qint64, QString> _tagTexts;
    std::size_t _readTagCount = 0;
};

/// For the page with the stored metadata.
class MoreReading final : public SelectionReading {
public:
    MoreReading(PBImageFileList items, FMDatabase& database, Clock clock = monotonicClock());

    [[nodiscard]] const MetadataMerge& merged() const { return _merged; }

protected:
    bool readBatch(Items items, std::span<const qint64> fileIds) override;
    [[nodiscard]] bool isSettled() const override;

private:
    std::vector<FileRows> _rows; // by category
    MetadataMerge _merged;
};
