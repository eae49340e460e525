#pragma once

#include "places/PlaceArray.h"
#include "places/PlaceIndex.h"

#include <map>
#include <optional>
#include <vector>

class FMDatabase;

/// Addresses that were found and are not in the catalogue yet, in the order in which they came.
/// They go there together: one transaction for each would wait for the disk four times.
/// One thread at a time.
class FoundPlaces {
public:
    struct Found {
        PBLocation location;
        PBDictionary address;
    };
    /// What they make of the known places.
    struct Changes {
        std::vector<PlaceEntry> inserted;
        std::map<std::size_t, std::vector<PBLocation>> grown; ///< by the number of a known place
    };

    void add(PBLocation location, PBDictionary address);
    [[nodiscard]] bool isEmpty() const { return _found.empty(); }
    /// Whether a position is strictly within `placeRadius` of one of these.
    [[nodiscard]] bool covers(PBLocation location) const {
        return _positions.firstWithin(location).has_value();
    }
    /// An address that is known grows its place by the position; each other makes one place.
    [[nodiscard]] Changes changesOf(const PlaceArray& known) const;

private:
    std::vector<Found> _found;
    PlaceIndex _positions;
};

/// Stores the changes, and gives the inserted places their ids. Nothing is stored otherwise.
enum class PlacesStored {
    Stored,
    Locked, ///< another connection held the file all the while: to be tried again
    Refused
};
[[nodiscard]] PlacesStored
storePlaces(FMDatabase& db, FoundPlaces::Changes& changes, const std::vector<PlaceEntry>& grown);
