#include "places/PlaceArray.h"

#include "core/LocalizedCompare.h"
#include "places/Addresses.h"

bool PlaceArray::KeyOrder::operator()(
    const QCollatorSortKey& key, const QCollatorSortKey& otherKey) const {
    return PBUtilities::compareSortKeys(key, otherKey) < 0;
}

void PlaceArray::append(PlaceEntry entry) {
    const std::size_t place = _entries.size();
    if (entry.AddressDict.isNull()) {
        if (!_withoutAddress) _withoutAddress = place;
    } else {
        const QString text = PBUtilities::longLocationStringForAddressDictionary(entry.AddressDict);
        if (!text.isNull()) {
            _byLongText.try_emplace(PBUtilities::localizedSortKey(text), place);
        } else if (!_withoutText) {
            _withoutText = place;
        }
    }
    for (std::size_t index = 0; index < entry.Longitude.size(); ++index) {
        _positions.add({entry.Latitude[index], entry.Longitude[index]}, place);
    }
    _entries.push_back(std::move(entry));
}

void PlaceArray::appendLocation(std::size_t place, PBLocation location) {
    _entries[place].Longitude.push_back(location.longitude);
    _entries[place].Latitude.push_back(location.latitude);
    _positions.add(location, place);
}

std::optional<std::size_t> PlaceArray::firstMatch(PBLocation location) const {
    return _positions.firstWithin(location);
}

std::optional<std::size_t> PlaceArray::firstWithAddress(const PBValue& address) const {
    if (address.isNull()) return _withoutAddress;
    const QString text = PBUtilities::longLocationStringForAddressDictionary(address);
    if (text.isNull()) return _withoutText;
    const auto found = _byLongText.find(PBUtilities::localizedSortKey(text));
    if (found == _byLongText.end()) return std::nullopt;
    return found->second;
}
