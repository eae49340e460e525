#pragma once

#include <QStringList>

/// What a user who edits tags wants of each photograph: it loses some and gets others, and keeps
/// whatever else it has. Tags are texts, compared without regard to case.
struct TagsChange {
    QStringList added;
    QStringList removed;

    [[nodiscard]] bool isEmpty() const { return added.isEmpty() && removed.isEmpty(); }
    bool operator==(const TagsChange&) const = default;
};
