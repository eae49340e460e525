#pragma once

#include "platform/values/PBValue.h"

#include <QStringView>

#include <array>
#include <map>
#include <span>
#include <vector>

/// The five kinds of stored metadata, in the order in which they are read.
enum class MetadataCategory { Exif, ExifAux, IPTC, TIFF, GPS };

inline constexpr std::array metadataCategories{
    MetadataCategory::Exif, MetadataCategory::ExifAux, MetadataCategory::IPTC,
    MetadataCategory::TIFF, MetadataCategory::GPS};

/// Under which the settings know a category: the name that properties of pictures have for it.
[[nodiscard]] QStringView keyOfCategory(MetadataCategory category);
/// The table of the catalogue; also the property type of `PBUtilities`, in another case.
[[nodiscard]] QStringView propertyTypeOfCategory(MetadataCategory category);

/// What photographs have in common, of those categories that all of them have; the null marker for
/// what they don't agree on.
using MoreInfoDict = std::map<MetadataCategory, PBDictionary>;

/// Merges the stored metadata of photographs, one after the other.
class MetadataMerge {
public:
    /// Whether rows of the category still change anything: not any more, once a photograph had
    /// none.
    [[nodiscard]] bool wants(MetadataCategory category) const;
    /// The columns of one photograph without its id, as `CatalogueSchema::metadataColumnsOfTable`
    /// has them; empty for one without a row.
    void add(MetadataCategory category, std::span<const PBValue> row);

    [[nodiscard]] MoreInfoDict moreInfoDict() const;

private:
    struct Merged {
        bool isPresent = false;
        bool isLost = false; ///< a photograph has no row
        PBDictionary dictionary;
        /// Of the first photograph, and which of its columns are still the same for all: nearly
        /// every row differs in nothing that is not known to differ.
        std::vector<PBValue> first;
        std::vector<std::size_t> common;
    };
    void merge(MetadataCategory category, Merged& merged, std::span<const PBValue> row);

    std::array<Merged, metadataCategories.size()> _merged;
};
