#pragma once

#include <QHash>
#include <QString>

#include <optional>

class FMDatabase;

namespace marks {

/// The texts of tags for somebody who asks for one after the other, such as a list of groups: read
/// together when the first is asked for. On the connection's thread.
class TagNames {
public:
    /// The connection outlives this object.
    explicit TagNames(FMDatabase& db) : _db(db) {}

    /// Empty for an id without a tag, and where it can't be read.
    [[nodiscard]] QString tagWithTagId(qint64 tagId);
    /// To be called when tags were renamed or removed; one that is new is found anyway.
    void forget() { _names.reset(); }

private:
    FMDatabase& _db;
    std::optional<QHash<qint64, QString>> _names;
};

} // namespace marks
