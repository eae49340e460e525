#pragma once

#include "platform/values/PBValue.h"

#include <QCollatorSortKey>

#include <array>
#include <memory>
#include <optional>

namespace group {

/// An address in the form in which place groups are compared: 0 for the same long
/// text, else by country and on downwards to the name, and in the end by the long text. What has no
/// text comes after what has. Immutable; any thread.
class AddressOrder {
public:
    explicit AddressOrder(const PBValue& address);

    /// -1, 0 or 1; 0 for the same place.
    [[nodiscard]] int compare(const AddressOrder& other) const;

    /// The order of an address, out of a memory of those that this thread met lately.
    [[nodiscard]] static std::shared_ptr<const AddressOrder> recent(const PBValue& address);

private:
    /// Nothing for an address without that text.
    using Key = std::optional<QCollatorSortKey>;

    static int compareKeys(const Key& key, const Key& other);

    Key _longText;
    std::array<Key, 5> _parts; // from the country down to the name
};

} // namespace group
