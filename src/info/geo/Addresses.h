#pragma once

#include "platform/PBValue.h"

#include <QString>

/// Texts and order of address dictionaries, whose keys platform/Geocoder.h names. An address is a
/// dictionary, the null marker (a place that has no address) or absent. Entries that are missing,
/// empty or no text count as nothing, and so does any other value in place of an address. Any
/// thread.
namespace PBUtilities {

/// `SubLocality`, `City` and `State`, else `Name`; and `Country` where that makes less than three
/// different names. A null string for an address with none of them.
[[nodiscard]] QString shortLocationStringForAddressDictionary(const PBValue& address);
/// The postal address in one line, else the short text; a null string for neither.
[[nodiscard]] QString longLocationStringForAddressDictionary(const PBValue& address);

/// The same place: the same long text, as `localizedStandardCompare` sees it.
[[nodiscard]] bool isEqualAddressDictionary(const PBValue& address, const PBValue& otherDict);

/// -1, 0 or 1, by the key "LongLocation", "ShortLocation" or one of the dictionary's. What has no
/// text comes after what has, the null marker after those, absent last; two of a kind are equal.
[[nodiscard]] int compareAddressDictionary(
    const PBValue& address, const PBValue& otherDict, const QString& compareKey);
/// The order of place groups: 0 for the same place, else by country and on downwards to the name,
/// and in the end by the long text.
[[nodiscard]] int compareAddressDictionary(const PBValue& address, const PBValue& otherDict);

} // namespace PBUtilities
