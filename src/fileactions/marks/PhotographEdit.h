#pragma once

#include <QString>
#include <QStringList>

#include <variant>
#include <vector>

namespace fileactions {

/// What the user does to photographs: a value. Panels, menus, keys, toolbar and drops make one, and
/// `EditRunner` performs it. What is relative, as a turn or the toggle of the flag, is decided when
/// its turn comes, so that two that follow each other quickly mean what they say.
struct PhotographEdit {
    /// 0 to 5; 0 takes the stars away.
    struct Rate {
        int stars = 0;
    };
    struct SetFlag {
        bool flag = false;
    };
    /// Sets the flag of all, unless each has it already: then it is taken away.
    struct ToggleFlag {};
    /// In the place of those that each has, in this order. A tag may hold any character.
    struct SetTags {
        QStringList tags;
    };
    /// Adds to and takes from those that each has; the rest of them stays.
    struct ChangeTags {
        QStringList added;
        QStringList removed;
    };
    /// Quarter turns: degrees counter-clockwise, 90 is left.
    struct Turn {
        int degrees = 0;
    };
    /// As the file's own orientation says.
    struct RotateAutomatically {};
    /// As the pixels lie in the file.
    struct ResetRotation {};
    /// Another name for the file of one photograph, in the same folder.
    struct Rename {
        QString name;
    };
    /// Of all photographs that have the tag. Where there is a tag of the other name already, the
    /// two become one.
    struct RenameTag {
        QString tag;
        QString name;
    };
    /// From all photographs, and from the list of tags.
    struct RemoveTag {
        QString tag;
    };
    using Change = std::variant<
        ToggleFlag, Rate, SetFlag, SetTags, ChangeTags, Turn, RotateAutomatically, ResetRotation,
        Rename, RenameTag, RemoveTag>;

    /// `PBImageFileItem::fileId`; none for what is done to a tag everywhere.
    std::vector<qint64> fileIds;
    Change change;
};

/// What has become of an edit.
struct EditResult {
    /// What it was; that of an undo is the edit that was taken back.
    enum class Kind { Stars, Flag, Tags, Rotation, Name, TagEverywhere };
    enum class Way { Done, Undone, Redone };

    Kind kind = Kind::Stars;
    Way way = Way::Done;
    /// The catalogue, the ledger and the items that are shown have it. Otherwise nothing has
    /// changed anywhere.
    bool isStored = false;
    /// Why not, in words for the user.
    QString reason = {};
    /// Those that are other than before.
    std::vector<qint64> changed = {};
    /// Some of them are not shown any more: search text or filter leave them out.
    bool hasLeft = false;
    /// So many are not in the catalogue any more, and were left out.
    qint64 missingCount = 0;
    /// Of the flag: whether they have it now.
    bool isFlagged = false;
    /// Of a turn: degrees counter-clockwise; 0 for any other way to another angle.
    int turnedBy = 0;
};

} // namespace fileactions
