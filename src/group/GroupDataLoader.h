#pragma once

#include "group/GroupTypes.h"
#include "group/MetadataRows.h"
#include "group/PBImageFileItem.h"
#include "platform/values/PBValue.h"

#include <optional>
#include <span>
#include <vector>

class FMDatabase;

namespace group {

/// Reads the values of an image's metadata tables into its group data array. Made once for a chain
/// and a sort type; asks only the tables that these need. Connections that keep their statements
/// make it several times faster. Belongs to the thread of the connection that it is given.
class GroupDataLoader {
public:
    /// With `needsLocation` positions are read even if no link of the chain groups by place.
    GroupDataLoader(std::span<const int> groupTypeArray, int sortType, bool needsLocation = false);

    /// The images that come next, in about that order: their rows are then read many at a time.
    void willLoad(std::vector<qint64> fileIds) { _rows.willRead(std::move(fileIds)); }

    /// Fills the slots whose values come from metadata; slots for which there is none stay as they
    /// are. Tables are read in a fixed order, so that a later one has the last word. Answers the
    /// sort key of sort type 4: the date taken, or the modification date for an image that tells
    /// none; absent for one that does not parse, and for other sort types.
    [[nodiscard]] PBValue loadGroupAndSortData(
        const PBImageFileItem& item, std::span<PBValue> groupData, FMDatabase& database);

    /// The location of the image that was loaded last, as `locationWithDatabase` gives it; absent
    /// when positions were not to be read.
    [[nodiscard]] PBValue lastLocation() const;

private:
    struct Source {
        std::size_t table; // of `_rows`
        ColumnDescriptors descriptors;
    };

    [[nodiscard]] PBValue
    loadExifGroupAndSortData(const PBImageFileItem& item, std::span<PBValue> groupData) const;
    void loadOtherGroupData(const Source& source, std::span<PBValue> groupData) const;
    void loadGPSGroupData(std::span<PBValue> groupData) const;

    bool _sortsByDateTaken;
    std::optional<Source> _exif;
    std::vector<Source> _others; // ExifAux, Tiff, IPTC, as far as they are needed
    std::optional<Source> _gps;
    MetadataRows _rows;
};

/// The position that four values make (reference and number of the latitude, the same of the
/// longitude); absent for numbers that are none on Earth. `acceptMissing` takes coordinates that
/// are not numbers as 0 instead of answering absent.
[[nodiscard]] PBValue locationFromColumns(std::span<const PBValue> columns, bool acceptMissing);

} // namespace group
