#pragma once

#include "places/PlaceEntry.h"
#include "places/PlaceIndex.h"

#include <QCollatorSortKey>

#include <map>
#include <optional>

/// All known places in the order of their arrival, with indexes that answer as a search from the
/// first to the last would. Only grows. One thread at a time.
class PlaceArray {
public:
    void append(PlaceEntry entry);
    /// One more position of the place with this number.
    void appendLocation(std::size_t place, PBLocation location);

    [[nodiscard]] std::size_t size() const { return _entries.size(); }
    [[nodiscard]] const PlaceEntry& at(std::size_t place) const { return _entries[place]; }

    /// The first place with a position strictly within `placeRadius` of this one.
    [[nodiscard]] std::optional<std::size_t> firstMatch(PBLocation location) const;
    /// The first place whose address equals this one (or both are the null marker).
    [[nodiscard]] std::optional<std::size_t> firstWithAddress(const PBValue& address) const;

private:
    struct KeyOrder {
        bool operator()(const QCollatorSortKey& key, const QCollatorSortKey& otherKey) const;
    };

    std::vector<PlaceEntry> _entries;
    PlaceIndex _positions;
    std::map<QCollatorSortKey, std::size_t, KeyOrder> _byLongText;
    std::optional<std::size_t> _withoutText;
    std::optional<std::size_t> _withoutAddress;
};
