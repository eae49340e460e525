#pragma once

#include "platform/values/PBValue.h"

#include <QString>

/// Texts of address dictionaries, whose keys places/Geocoder.h names. An address is a
/// dictionary, the null marker (a place that has no address) or absent. Entries that are missing,
/// empty or no text count as nothing, and so does any other value in place of an address. Any
/// thread.
namespace PBUtilities {

/// `SubLocality`, `City` and `State`, else `Name`; and `Country` where that makes less than three
/// different names. A null string for an address with none of them.
[[nodiscard]] QString shortLocationStringForAddressDictionary(const PBValue& address);
/// The postal address in one line, else the short text; a null string for neither.
[[nodiscard]] QString longLocationStringForAddressDictionary(const PBValue& address);

} // namespace PBUtilities
