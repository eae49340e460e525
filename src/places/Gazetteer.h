#pragma once

#include "platform/values/PBValue.h"

#include <QFile>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace places {

/// Mean radius of the Earth in metres (IUGG).
inline constexpr double earthRadius = 6371008.8;

/// Latitude within 90 and longitude within 180 degrees; false for what is not finite.
[[nodiscard]] bool isValidLocation(PBLocation location);

/// Inhabited places of the world and their nearest-neighbour search, over a mapped file whose
/// format docs/GAZETTEER.md tells. Never changes, so every operation may be called from any thread.
class Gazetteer {
public:
    struct Nearest {
        std::uint32_t place = 0;
        double distance = 0; ///< metres along the Earth's surface
    };
    /// What the file says of a place. Texts are UTF-8 and live as long as the gazetteer.
    struct Place {
        const char* name = nullptr;
        const char* city = nullptr; ///< of which the place is a quarter, or nullptr
        std::uint32_t division = 0;
    };
    struct Division {
        const char* name = nullptr;        ///< may be empty
        std::array<char, 2> countryCode{}; ///< ISO 3166
    };

    /// Maps the file and checks all of it. nullptr if it can't be read or is damaged; then `reason`
    /// is a sentence on why, without the path.
    [[nodiscard]] static std::shared_ptr<const Gazetteer>
    open(const QString& path, QString* reason);

    /// Whether the file can be read and its head is that of a gazetteer: what shows without going
    /// through all of it. `reason` as with `open`.
    [[nodiscard]] static bool isThere(const QString& path, QString* reason);

    /// The place nearest to a valid location, if there is one strictly within the distance.
    [[nodiscard]] std::optional<Nearest> nearest(PBLocation location, double maximumDistance) const;

    [[nodiscard]] std::uint32_t placeCount() const {
        return static_cast<std::uint32_t>(_points.size());
    }
    [[nodiscard]] std::uint32_t divisionCount() const {
        return static_cast<std::uint32_t>(_divisions.size());
    }
    /// `index` below `placeCount`.
    [[nodiscard]] Place place(std::uint32_t index) const;
    [[nodiscard]] PBLocation location(std::uint32_t index) const;
    /// `index` below `divisionCount`.
    [[nodiscard]] Division division(std::uint32_t index) const;

    /// Unit vector from the Earth's centre.
    struct Point {
        std::array<float, 3> axis;
    };

private:
    struct PlaceRecord {
        std::uint32_t name;
        std::uint16_t division;
        std::uint16_t quarter;
    };
    struct DivisionRecord {
        std::uint32_t name;
        std::array<char, 2> countryCode;
        std::uint16_t unused;
    };

    Gazetteer() = default;
    [[nodiscard]] QString map(const QString& path);
    [[nodiscard]] bool areReferencesValid() const;

    QFile _file; // owns the mapping that the spans look into
    std::uint32_t _leafSize = 1;
    std::span<const Point> _points;
    std::span<const PlaceRecord> _places;
    std::span<const std::uint32_t> _quarters;
    std::span<const DivisionRecord> _divisions;
    std::span<const char> _names;
};

} // namespace places
