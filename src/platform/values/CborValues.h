#pragma once

#include "platform/values/PBValue.h"

#include <optional>

namespace platform {

/// Dictionaries as CBOR, with every kind of value but for the width of numbers: integers come back
/// as `qint64`, floating-point numbers as `double`. Any thread.
[[nodiscard]] QByteArray encodeDictionary(const PBDictionary& dictionary);
/// Nothing if the bytes are not one whole dictionary of such values, or nest deeper than 16 levels.
[[nodiscard]] std::optional<PBDictionary> decodeDictionary(const QByteArray& bytes);

} // namespace platform
