#pragma once

#include "info/rows/InfoRow.h"
#include "info/rows/MetadataMerge.h"

#include <QLocale>

#include <optional>

/// The rows of the page with the stored metadata, and its segments. Pure functions, any thread.
namespace MoreInfo {

/// The categories that can be chosen, in the order of their segments. Auxiliary EXIF stands with
/// EXIF under one segment.
[[nodiscard]] std::vector<MetadataCategory> segments(const MoreInfoDict& dictionaries);
/// The localised title of a segment.
[[nodiscard]] QString segmentTitle(MetadataCategory category);
/// What a click on a segment chooses. Counts what has a dictionary of its own, so that where there
/// is auxiliary EXIF alone a click lands one category further on, or nowhere.
[[nodiscard]] std::optional<MetadataCategory>
categoryOfClick(const MoreInfoDict& dictionaries, int segment);
/// The segment's category with this key of the settings, without regard to case; the first one
/// where there is none. Nothing without segments.
[[nodiscard]] std::optional<MetadataCategory>
chosenCategory(const MoreInfoDict& dictionaries, QStringView key);

[[nodiscard]] InfoRows
rows(const MoreInfoDict& dictionaries, MetadataCategory category, const QLocale& locale);
/// How many rows the page is high: with the places that it keeps free below those that it shows.
[[nodiscard]] int heightInRows(MetadataCategory category, const InfoRows& rows);

/// Where all the photographs were taken; nothing where that is not known, or not one place.
[[nodiscard]] std::optional<PBLocation> location(const MoreInfoDict& dictionaries);

} // namespace MoreInfo
