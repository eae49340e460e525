#pragma once

#include "platform/values/PBValue.h"

#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

/// Finds the first place of an array that a position belongs to, without looking at all of them.
///
/// Positions lie in cubes of a grid through the Earth, so that neither the poles nor the
/// antimeridian are special. A straight line is never longer than the way along the surface:
/// whatever is within `placeRadius` is in one of the few cubes that touch that radius. The answer
/// is that of a linear search by `distanceFromLocation`. One thread at a time.
class PlaceIndex {
public:
    /// A position that is none is left out: nothing is near it.
    void add(PBLocation location, std::size_t place);
    /// The smallest number of a place with a position strictly within `placeRadius`.
    [[nodiscard]] std::optional<std::size_t> firstWithin(PBLocation location) const;

private:
    struct Position {
        PBLocation location;
        std::size_t place = 0;
    };
    using Cube = std::array<std::int32_t, 3>;
    struct CubeHash {
        [[nodiscard]] std::size_t operator()(const Cube& cube) const;
    };

    std::unordered_map<Cube, std::vector<Position>, CubeHash> _cubes;
};
