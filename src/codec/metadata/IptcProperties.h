#pragma once

#include "codec/metadata/MetadataReader.h"
#include "platform/values/PBValue.h"

namespace codec {

/// The dictionary "{IPTC}": the data sets of the file's IPTC record, under their customary names
/// ("Caption/Abstract"), repeatable ones as arrays; where a set is missing, the XMP property that
/// stands for it; and what only XMP has: the creator's contact data as the nested dictionary
/// "CreatorContactInfo", "UsageTerms", "Scene" and "StarRating". The metadata library's lock is
/// held.
[[nodiscard]] PBDictionary iptcProperties(const Metadata& metadata);

/// Every key that `iptcProperties` can answer, those of the nested dictionary among them.
[[nodiscard]] QStringList iptcPropertyKeys();

} // namespace codec
