#pragma once

#include "platform/values/PBValue.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace bench {

/// A value in the form that SQLite's own interface takes.
using PlainValue = std::variant<std::int64_t, double, std::string>;

/// One table's share of a photograph, as the catalogue takes it and as the bare interface does.
struct PhotoRow {
    PBDictionary dictionary;
    std::vector<PlainValue> plain;
};

/// The tables that a photograph of a phone or a camera fills.
inline constexpr std::array<const char*, 4> photoTables{"ImageFile", "Exif", "Tiff", "GPS"};

struct PhotoRows {
    /// Photographs of one camera have the same keys.
    int camera;
    std::array<PhotoRow, photoTables.size()> rows;
};

/// Records of photographs as three cameras write them, with 25 to 30 EXIF keys each.
[[nodiscard]] std::vector<PhotoRows> makePhotoRows(int count);
inline constexpr int cameraCount = 3;

} // namespace bench
