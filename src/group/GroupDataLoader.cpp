#include "group/GroupDataLoader.h"

#include "core/Texts.h"
#include "group/ItemOrder.h"

#include <cmath>
#include <utility>

namespace group {

namespace {

bool isCaptureDate(int type) {
    return type == CaptureYear || type == CaptureMonth;
}

/// Texts lose their newlines; one that is blank then counts as no value.
void storeCleaned(const PBValue& value, PBValue& slot) {
    if (!value.hasValue()) return;
    const auto* text = value.getIf<QString>();
    if (!text) {
        slot = value;
    } else if (!PBUtilities::isEmptyOrWhitespace(*text)) {
        slot = PBUtilities::removeNewline(*text);
    }
}

/// Cameras and programs that write "N/A" for a maker or model that they don't know.
bool isNotAvailable(int type, const PBValue& value) {
    if (type != CameraMake && type != CameraModel) return false;
    const auto* text = value.getIf<QString>();
    return text && text->compare(u"N/A", Qt::CaseInsensitive) == 0;
}

PBDate modificationDate(const PBImageFileItem& item) {
    return PBDate{item.modifiedDate()};
}

std::optional<PBDate> dateOf(const PBValue& column) {
    const auto* text = column.getIf<QString>();
    return text ? PBUtilities::exifDate(*text) : std::nullopt;
}

PBValue captureDate(const PBValue& column, const PBImageFileItem& item) {
    if (const auto date = dateOf(column)) return *date;
    return modificationDate(item);
}

/// One coordinate, negative in the hemisphere of that letter.
double coordinate(const PBValue& reference, const PBValue& number, QStringView negativeReference) {
    const double degrees = number.toDouble();
    const bool isNegative = reference.toText().compare(negativeReference, Qt::CaseInsensitive) == 0;
    return isNegative ? -degrees : degrees;
}

QStringList columnsOf(const ColumnDescriptors& descriptors) {
    QStringList columns;
    for (const ColumnDescriptor& descriptor : descriptors)
        columns += descriptor.columns;
    return columns;
}

} // namespace

PBValue locationFromColumns(std::span<const PBValue> columns, bool acceptMissing) {
    if (columns.size() < 4) return {};
    if (!acceptMissing && !(columns[1].isNumber() && columns[3].isNumber())) return {};
    const PBLocation location{
        coordinate(columns[0], columns[1], u"s"), coordinate(columns[2], columns[3], u"w")};
    const bool isOnEarth =
        std::abs(location.latitude) <= 90.0 && std::abs(location.longitude) <= 180.0;
    return isOnEarth ? PBValue(location) : PBValue();
}

GroupDataLoader::GroupDataLoader(
    std::span<const int> groupTypeArray, int sortType, bool needsLocation)
    : _sortsByDateTaken(sortType == SortDateTaken), _rows({}) {
    // In the order in which they are read.
    std::vector<MetadataRows::Table> tables;
    const auto add = [&](QStringView name, const QStringList& columns) {
        tables.push_back({name.toString(), columns});
        return tables.size() - 1;
    };
    auto exif = exifTypeForGroupType(groupTypeArray);
    if (!exif.empty() || _sortsByDateTaken) {
        QStringList columns = columnsOf(exif);
        if (_sortsByDateTaken) columns.append(QStringLiteral("DateTimeDigitized"));
        _exif = Source{add(u"Exif", columns), std::move(exif)};
    }
    std::pair<QStringView, ColumnDescriptors> others[] = {
        {u"ExifAux", exifAuxiliaryTypeForGroupType(groupTypeArray)},
        {u"Tiff", tiffTypeForGroupType(groupTypeArray)},
        {u"IPTC", iptcTypeForGroupType(groupTypeArray)}};
    for (auto& [table, descriptors] : others) {
        if (descriptors.empty()) continue;
        const std::size_t index = add(table, columnsOf(descriptors));
        _others.push_back({index, std::move(descriptors)});
    }
    // All links that group by place share the same four columns.
    auto gps = gpsTypeForGroupType(groupTypeArray);
    if (!gps.empty() || needsLocation)
        _gps = Source{add(u"GPS", positionColumns()), std::move(gps)};
    _rows = MetadataRows(std::move(tables));
}

PBValue GroupDataLoader::loadGroupAndSortData(
    const PBImageFileItem& item, std::span<PBValue> groupData, FMDatabase& database) {
    _rows.read(item.fileId(), database);
    PBValue sortData;
    if (_exif) sortData = loadExifGroupAndSortData(item, groupData);
    for (const Source& source : _others)
        loadOtherGroupData(source, groupData);
    if (_gps) loadGPSGroupData(groupData);
    return sortData;
}

PBValue GroupDataLoader::loadExifGroupAndSortData(
    const PBImageFileItem& item, std::span<PBValue> groupData) const {
    static const PBValue absent;
    const auto row = _rows.row(_exif->table);
    std::size_t column = 0;
    for (const ColumnDescriptor& descriptor : _exif->descriptors) {
        const PBValue& value = row.empty() ? absent : row[column++];
        PBValue& slot = groupData[descriptor.position];
        if (isCaptureDate(descriptor.type)) {
            slot = captureDate(value, item);
        } else {
            storeCleaned(value, slot);
        }
    }
    if (!_sortsByDateTaken) return {};
    const PBValue& taken = row.empty() ? absent : row[column];
    if (!taken.hasValue()) return modificationDate(item);
    const auto date = dateOf(taken);
    return date ? PBValue(*date) : PBValue();
}

void GroupDataLoader::loadOtherGroupData(const Source& source, std::span<PBValue> groupData) const {
    const auto row = _rows.row(source.table);
    if (row.empty()) return;
    std::size_t column = 0;
    for (const ColumnDescriptor& descriptor : source.descriptors) {
        const PBValue& value = row[column++];
        if (!isNotAvailable(descriptor.type, value))
            storeCleaned(value, groupData[descriptor.position]);
    }
}

void GroupDataLoader::loadGPSGroupData(std::span<PBValue> groupData) const {
    const PBValue location = locationFromColumns(_rows.row(_gps->table), false);
    if (location.isAbsent()) return;
    for (const ColumnDescriptor& descriptor : _gps->descriptors)
        groupData[descriptor.position] = location;
}

PBValue GroupDataLoader::lastLocation() const {
    return _gps ? locationFromColumns(_rows.row(_gps->table), true) : PBValue();
}

} // namespace group
