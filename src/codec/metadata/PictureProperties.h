#pragma once

#include "platform/values/PBValue.h"

#include <optional>
#include <utility>

namespace codec {

/// What became of a question for the properties of a picture. Three answers, and nothing that lasts
/// goes on the third.
enum class PropertiesStatus {
    Read,
    Unreadable, ///< it was looked at, and is no picture, or ends whoever reads it
    NotNow,     ///< it could not be looked at: another time it may be
};

struct PictureProperties {
    PropertiesStatus status = PropertiesStatus::NotNow;
    PBDictionary properties; ///< empty unless they were read

    [[nodiscard]] static PictureProperties of(std::optional<PBDictionary> read) {
        if (!read) return {PropertiesStatus::Unreadable, {}};
        return {PropertiesStatus::Read, std::move(*read)};
    }
    [[nodiscard]] std::optional<PBDictionary> ifRead() && {
        if (status != PropertiesStatus::Read) return std::nullopt;
        return std::move(properties);
    }
};

} // namespace codec
