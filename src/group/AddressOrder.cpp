#include "group/AddressOrder.h"

#include "core/LocalizedCompare.h"
#include "places/Addresses.h"
#include "places/Geocoder.h"

#include <QHash>

#include <utility>

namespace group {

namespace {

namespace AddressKeys = places::AddressKeys;

std::optional<QCollatorSortKey> keyOf(const QString& text) {
    if (text.isEmpty()) return std::nullopt;
    return PBUtilities::recentSortKey(text);
}

QString partOf(const PBValue& address, const QString& key) {
    const PBDictionary* dictionary = address.dictionary();
    const QString* text = dictionary ? valueForKey(*dictionary, key).getIf<QString>() : nullptr;
    return text ? *text : QString();
}

} // namespace

AddressOrder::AddressOrder(const PBValue& address)
    : _longText(keyOf(PBUtilities::longLocationStringForAddressDictionary(address))),
      _parts{
          keyOf(partOf(address, AddressKeys::country)), keyOf(partOf(address, AddressKeys::state)),
          keyOf(partOf(address, AddressKeys::city)),
          keyOf(partOf(address, AddressKeys::subLocality)),
          keyOf(partOf(address, AddressKeys::name))} {}

int AddressOrder::compareKeys(const Key& key, const Key& other) {
    if (!key || !other)
        return static_cast<int>(other.has_value()) - static_cast<int>(key.has_value());
    return PBUtilities::compareSortKeys(*key, *other);
}

int AddressOrder::compare(const AddressOrder& other) const {
    if (this == &other) return 0;
    const int order = compareKeys(_longText, other._longText);
    if (order == 0) return 0;
    for (std::size_t part = 0; part < _parts.size(); ++part) {
        const int difference = compareKeys(_parts[part], other._parts[part]);
        if (difference != 0) return difference;
    }
    return order;
}

std::shared_ptr<const AddressOrder> AddressOrder::recent(const PBValue& address) {
    // The dictionary is held along, so that its address in memory stays its own.
    using Known = std::pair<PBValue, std::shared_ptr<const AddressOrder>>;
    thread_local QHash<const PBDictionary*, Known> recentOrders;
    constexpr qsizetype maximalOrders = 4096;
    const auto known = recentOrders.constFind(address.dictionary());
    if (known != recentOrders.cend()) return known->second;
    if (recentOrders.size() >= maximalOrders) recentOrders.clear();
    auto order = std::make_shared<const AddressOrder>(address);
    recentOrders.insert(address.dictionary(), {address, order});
    return order;
}

} // namespace group
