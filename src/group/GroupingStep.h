#pragma once

#include "group/GroupDataLoader.h"
#include "group/ImageFileRow.h"
#include "group/PBGroupItem.h"
#include "group/PlaceAddresses.h"

#include <QString>

#include <memory>
#include <span>
#include <vector>

class FMDatabase;

namespace group {

/// One item with all that decides its place in a tree.
struct GroupInsertion {
    std::shared_ptr<PBImageFileItem> imageFileItem;
    PBGroupItemArray& workGroupItemArray;
    std::span<const int> groupTypeArray;
    /// One value for each link of the chain. A position is replaced by its address.
    std::span<const PBValue> groupDataArray;
    int sortType = 0;
    bool descendingSort = false;
    /// nullptr: no address is ever known.
    PlaceAddresses* places = nullptr;
};

/// Puts an item at its place by one binary search for each link and one in the leaf. An empty chain
/// gives a single node of type 0. On the thread of the tree.
void pushImageFileItemToWorkGroupItemArray(const GroupInsertion& insertion);

/// What all the rows of one scan have in common. The work tree's address identifies the scan.
struct GroupingParameters {
    std::shared_ptr<PBGroupItemArray> workGroupItemArray;
    std::vector<int> groupTypeArray;
    int sortType = 0;
    bool descendingSort = false;
    QString searchString;
    quint64 filter = 0;
};

/// Turns rows of the catalogue into items of the work tree: the one step that every scan operation
/// shares. Belongs to the scan thread, as its connection and the work tree do.
class GroupingStep {
public:
    /// The connection is made to keep its statements; when an item is inserted, no cursor or
    /// transaction may be open on it. Both outlive this object; `places` may be nullptr, then
    /// positions stay without addresses.
    GroupingStep(GroupingParameters parameters, FMDatabase& database, PlaceAddresses* places);

    /// The rows that are inserted next, in about that order: their metadata are then read many at a
    /// time. Leaving some out, or telling nothing, is no harm.
    void willInsert(std::span<const ImageFileRow> rows);
    /// Makes the item of a row and inserts it; nullptr when search text or filter leave it out.
    /// Flag and stars that are missing count as 0.
    std::shared_ptr<PBImageFileItem> insert(const ImageFileRow& row, const QString& folderPath);
    /// Inserts an item that was in the tree before, at the place that it now has; false when search
    /// text or filter leave it out. Flag and stars are the item's own; of the row only what
    /// `needsRow` tells is looked at. The folder is a path, or the null marker.
    bool
    reinsert(const std::shared_ptr<PBImageFileItem>& item, ImageFileRow row, PBValue folderPath);
    /// Whether `reinsert` needs the columns UTIType, ImageDPI, ColorModel and Tag of the row.
    [[nodiscard]] bool needsRow() const;

    [[nodiscard]] const GroupingParameters& parameters() const { return _parameters; }

private:
    void place(
        const std::shared_ptr<PBImageFileItem>& item, const ImageFileRow& row,
        const PBValue& folderPath);
    [[nodiscard]] PBArray groupData(
        const PBImageFileItem& item, const ImageFileRow& row, const PBValue& folderPath) const;
    [[nodiscard]] bool hasLink(int type) const;

    const GroupingParameters _parameters;
    const SearchText _searchText;
    FMDatabase& _database;
    PlaceAddresses* const _places;
    GroupDataLoader _loader;
};

} // namespace group
