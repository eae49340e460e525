#include "group/GroupingStep.h"

#include "FMDB/FMDatabase.h"
#include "group/FileItemOfRow.h"
#include "group/ItemOrder.h"
#include "group/PixelCount.h"
#include "platform/files/TypeIdentifiers.h"

#include <algorithm>
#include <limits>

namespace group {

namespace {

/// The value of a place group: the address dictionary, the null marker for a position whose address
/// is not known, absent for no position.
PBValue placeValue(const PBValue& slot, PlaceAddresses* places) {
    const auto* location = slot.getIf<PBLocation>();
    if (!location) return slot.isNull() ? PBValue() : slot;
    if (!places) return PBNull{};
    const PBValue address = places->addressDictionaryWithLocation(*location);
    if (!address.isAbsent()) return address;
    places->addLocationToReverseGeocoding(*location);
    return PBNull{};
}

PBValue numberOrZero(const PBValue& value) {
    return value.hasValue() ? value : PBValue(0);
}

PBValue orNull(const PBValue& value) {
    return value.isAbsent() ? PBValue(PBNull{}) : value;
}

/// The extension of the row's type, or the null marker.
PBValue kindOf(const ImageFileRow& row) {
    const QString extension = platform::TypeIdentifiers::preferredExtension(row.utiType.toText());
    return extension.isEmpty() ? PBValue(PBNull{}) : PBValue(extension);
}

/// The null marker where no tag is left, as for an image that never had one.
PBValue tagsOf(const PBValue& column) {
    const QString ids = column.toText();
    const bool hasTag = std::ranges::any_of(
        ids, [](QChar character) { return character != u',' && !character.isSpace(); });
    return hasTag ? column : PBValue(PBNull{});
}

int bucketOf(quint64 size) {
    constexpr auto most = static_cast<quint64>(std::numeric_limits<qint64>::max());
    return sizeBucket(static_cast<qint64>(std::min(size, most)));
}

} // namespace

void pushImageFileItemToWorkGroupItemArray(const GroupInsertion& insertion) {
    PBGroupItemArray* level = &insertion.workGroupItemArray;
    PBGroupItem* node = nullptr;
    const std::size_t links =
        std::min(insertion.groupTypeArray.size(), insertion.groupDataArray.size());
    for (std::size_t link = 0; link < links; ++link) {
        const int type = insertion.groupTypeArray[link];
        const PBValue& slot = insertion.groupDataArray[link];
        node = type == Place ? &PBGroupItem::sortAddGroupItem(
                                   *level, node, type, placeValue(slot, insertion.places))
                             : &PBGroupItem::sortAddGroupItem(*level, node, type, slot);
        level = &node->children();
    }
    if (!node) node = &PBGroupItem::sortAddGroupItem(*level, nullptr, AllImages, {});
    node->sortAddImageFileItem(
        insertion.imageFileItem, insertion.sortType, insertion.descendingSort);
}

GroupingStep::GroupingStep(
    GroupingParameters parameters, FMDatabase& database, PlaceAddresses* places)
    : _parameters(std::move(parameters)), _searchText(_parameters.searchString),
      _database(database), _places(places),
      _loader(_parameters.groupTypeArray, _parameters.sortType, places != nullptr) {
    _database.setShouldCacheStatements(true);
}

void GroupingStep::willInsert(std::span<const ImageFileRow> rows) {
    std::vector<qint64> fileIds;
    fileIds.reserve(rows.size());
    for (const ImageFileRow& row : rows)
        fileIds.push_back(row.id);
    _loader.willLoad(std::move(fileIds));
}

std::shared_ptr<PBImageFileItem>
GroupingStep::insert(const ImageFileRow& row, const QString& folderPath) {
    auto item = fileItemOfRow(row);
    if (!item->isMatchedForSearchString(_searchText, _parameters.filter)) return {};
    place(item, row, folderPath);
    return item;
}

bool GroupingStep::reinsert(
    const std::shared_ptr<PBImageFileItem>& item, ImageFileRow row, PBValue folderPath) {
    if (!item->isMatchedForSearchString(_searchText, _parameters.filter)) return false;
    row.fileFlag = item->flagged();
    row.fileStars = item->star();
    place(item, row, folderPath);
    return true;
}

bool GroupingStep::needsRow() const {
    return _parameters.sortType == SortKind ||
           std::ranges::any_of(_parameters.groupTypeArray, [](int type) {
               return type == FileKind || type == Resolution || type == ColorModel || type == Tags;
           });
}

bool GroupingStep::hasLink(int type) const {
    return std::ranges::find(_parameters.groupTypeArray, type) != _parameters.groupTypeArray.end();
}

void GroupingStep::place(
    const std::shared_ptr<PBImageFileItem>& item, const ImageFileRow& row,
    const PBValue& folderPath) {
    if (_parameters.sortType == SortKind) item->setSortData(kindOf(row));
    PBArray data = groupData(*item, row, folderPath);
    PBValue sortDate = _loader.loadGroupAndSortData(*item, data, _database);
    if (_parameters.sortType == SortDateTaken) item->setSortData(std::move(sortDate));
    if (_places && !hasLink(Place)) {
        // Every position is looked up in time for a grouping by place later on.
        const PBValue location = _loader.lastLocation();
        if (const auto* position = location.getIf<PBLocation>())
            _places->addLocationToReverseGeocoding(*position);
    }
    pushImageFileItemToWorkGroupItemArray({
        .imageFileItem = item,
        .workGroupItemArray = *_parameters.workGroupItemArray,
        .groupTypeArray = _parameters.groupTypeArray,
        .groupDataArray = data,
        .sortType = _parameters.sortType,
        .descendingSort = _parameters.descendingSort,
        .places = _places,
    });
}

PBArray GroupingStep::groupData(
    const PBImageFileItem& item, const ImageFileRow& row, const PBValue& folderPath) const {
    PBArray data;
    data.reserve(_parameters.groupTypeArray.size());
    for (const int type : _parameters.groupTypeArray) {
        switch (type) {
        case ModificationYear:
        case ModificationMonth:
            data.push_back(PBDate{item.modifiedDate()});
            break;
        case Folder:
            data.push_back(folderPath);
            break;
        case FileKind:
            data.push_back(_parameters.sortType == SortKind ? item.sortData() : kindOf(row));
            break;
        case FileSizeBucket:
            data.push_back(bucketOf(item.fileSize()));
            break;
        case PixelCountBucket:
            data.push_back(bucketOf(pixelCount(item.imageSize())));
            break;
        case Resolution:
            data.push_back(row.imageDPI.hasValue() ? row.imageDPI : PBValue(72));
            break;
        case ColorModel:
            data.push_back(orNull(row.colorModel));
            break;
        case Flag:
            data.push_back(numberOrZero(row.fileFlag));
            break;
        case StarRating:
            data.push_back(numberOrZero(row.fileStars));
            break;
        case Tags:
            data.push_back(tagsOf(row.tag));
            break;
        default:
            data.push_back(PBNull{});
        }
    }
    return data;
}

} // namespace group
