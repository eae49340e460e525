#pragma once

#include "group/AddressOrder.h"
#include "platform/values/PBValue.h"

#include <QCollatorSortKey>

#include <memory>
#include <variant>

namespace group {

/// What the groups of one level are ordered by: made once of a group's type and value, then
/// compared many times. Two values of a type belong to the same group exactly when their keys
/// compare as 0. A value that a type should not have, such as a text where a number belongs, still
/// has its place: behind the proper ones. Immutable; any thread.
class GroupOrderKey {
public:
    GroupOrderKey(int type, const PBValue& value);

    /// -1, 0 or 1, for keys of the same type. The null marker stands behind all values, absent
    /// behind the null marker. Types without values, and unknown ones, are all equal.
    [[nodiscard]] int compare(const GroupOrderKey& other) const;

private:
    /// Values that are all equal.
    struct Same {};
    struct Null {};
    struct Absent {};
    /// In the order of the user's language, in which "trip" and "Trip", or "Day 1" and "Day 01",
    /// are alike: the exact path keeps them apart.
    struct FolderPath {
        QCollatorSortKey sortKey;
        QString path;
        [[nodiscard]] int compare(const FolderPath& other) const;
    };
    /// Names of cameras and lenses, in which numbers count as such; alike in any case.
    struct Name {
        QCollatorSortKey sortKey;
        QString text;
        [[nodiscard]] int compare(const Name& other) const;
    };
    using Address = std::shared_ptr<const AddressOrder>;
    /// In the order in which different kinds stand.
    using Key = std::variant<Same, double, QString, Name, FolderPath, Address, Null, Absent>;

    static Key makeKey(int type, const PBValue& value);
    static Key numberKey(int type, const PBValue& value);

    Key _key;
};

} // namespace group
