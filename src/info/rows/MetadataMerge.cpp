#include "info/rows/MetadataMerge.h"

#include "catalogue/CatalogueSchema.h"
#include "catalogue/MetadataKeys.h"

#include <algorithm>
#include <numeric>

QStringView keyOfCategory(MetadataCategory category) {
    switch (category) {
    case MetadataCategory::Exif:
        return u"{Exif}";
    case MetadataCategory::ExifAux:
        return u"{ExifAux}";
    case MetadataCategory::IPTC:
        return u"{IPTC}";
    case MetadataCategory::TIFF:
        return u"{TIFF}";
    case MetadataCategory::GPS:
        return u"{GPS}";
    }
    return {};
}

QStringView propertyTypeOfCategory(MetadataCategory category) {
    if (category == MetadataCategory::TIFF) return u"Tiff";
    const QStringView key = keyOfCategory(category);
    return key.sliced(1, key.size() - 2);
}

bool MetadataMerge::wants(MetadataCategory category) const {
    return !_merged[static_cast<std::size_t>(category)].isLost;
}

void MetadataMerge::add(MetadataCategory category, std::span<const PBValue> row) {
    Merged& merged = _merged[static_cast<std::size_t>(category)];
    if (merged.isLost) return;
    if (row.empty()) {
        merged = Merged();
        merged.isLost = true;
        return;
    }
    if (merged.isPresent) return merge(category, merged, row);
    merged.isPresent = true;
    merged.dictionary =
        PBUtilities::propertyDictionaryFromArray(row, propertyTypeOfCategory(category));
    merged.first.assign(row.begin(), row.end());
    merged.common.resize(row.size());
    std::iota(merged.common.begin(), merged.common.end(), 0);
}

void MetadataMerge::merge(MetadataCategory category, Merged& merged, std::span<const PBValue> row) {
    const bool isSame = std::ranges::all_of(merged.common, [&](std::size_t column) {
        return column < row.size() && row[column] == merged.first[column];
    });
    if (isSame) return;
    const QStringView type = propertyTypeOfCategory(category);
    PBUtilities::mergePropertyDictionary(merged.dictionary, row, type);
    const QStringList& columns = CatalogueSchema::metadataColumnsOfTable(type);
    std::erase_if(merged.common, [&](std::size_t column) {
        return valueForKey(merged.dictionary, columns[static_cast<qsizetype>(column)]).isNull();
    });
}

MoreInfoDict MetadataMerge::moreInfoDict() const {
    MoreInfoDict dictionaries;
    for (const MetadataCategory category : metadataCategories) {
        const Merged& merged = _merged[static_cast<std::size_t>(category)];
        if (merged.isPresent && !merged.isLost) dictionaries.emplace(category, merged.dictionary);
    }
    return dictionaries;
}
