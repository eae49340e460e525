#include "fileactions/marks/PhotographEditStoring.h"

#include "catalogue/marks/Stars.h"
#include "catalogue/marks/TagRows.h"
#include "fileactions/RenameImageFile.h"
#include "fileactions/marks/EditTransaction.h"

#include <algorithm>
#include <map>

namespace fileactions {

namespace {

using marks::MarksChange;
using marks::MarksLedger;
using Kind = EditResult::Kind;

MarksChange starsChange(int stars) {
    return {
        .stars = std::clamp(stars, 0, marks::mostStars), .flag = {}, .tags = {}, .rotation = {}};
}

MarksChange flagChange(bool flag) {
    return {.stars = {}, .flag = flag, .tags = {}, .rotation = {}};
}

MarksChange rotationChange(std::optional<int> angle) {
    return {
        .stars = {},
        .flag = {},
        .tags = {},
        .rotation = std::optional<std::optional<int>>(std::in_place, angle)};
}

bool contains(const QStringList& tags, const QString& tag) {
    return tags.contains(tag, Qt::CaseInsensitive);
}

/// Each change of `PhotographEdit`, within a transaction; false: it can't be stored.
class Storing {
public:
    Storing(EditTransaction& transaction, const std::vector<qint64>& fileIds, StoredEdit& stored)
        : _transaction(transaction), _fileIds(fileIds), _stored(stored),
          _tags(transaction.connection()) {}

    bool operator()(const PhotographEdit::Rate& rate) { return change(starsChange(rate.stars)); }

    bool operator()(const PhotographEdit::SetFlag& set) {
        _stored.isFlagged = set.flag;
        return change(flagChange(set.flag));
    }

    bool operator()(const PhotographEdit::ToggleFlag& /*toggle*/) {
        const auto rows = marks::shownRows(_transaction.connection(), _fileIds);
        if (!rows) return false;
        const bool isSet = !rows->empty() && std::ranges::all_of(*rows, &marks::ShownRow::flag);
        return (*this)(PhotographEdit::SetFlag{.flag = !isSet});
    }

    bool operator()(const PhotographEdit::SetTags& set) {
        const auto tags = asListed(set.tags);
        if (!tags) return false;
        return change({.stars = {}, .flag = {}, .tags = *tags, .rotation = {}});
    }

    bool operator()(const PhotographEdit::ChangeTags& wanted) {
        const auto added = asListed(wanted.added);
        // In the very spelling: a list from elsewhere may have two that differ in case alone.
        QStringList removed;
        for (const QString& tag : wanted.removed) {
            const auto row = _tags.find(tag);
            if (!row) return false;
            removed += row->tag;
        }
        return added && changeEach(_fileIds, [&](const QStringList& before) {
                   QStringList tags;
                   for (const QString& tag : before)
                       if (!removed.contains(tag) || contains(*added, tag)) tags += tag;
                   for (const QString& tag : *added)
                       if (!contains(tags, tag)) tags += tag;
                   return tags;
               });
    }

    bool operator()(const PhotographEdit::Turn& turn) {
        constexpr int fullTurn = 360;
        if (turn.degrees % fullTurn == 0) return true;
        _stored.turnedBy = turn.degrees;
        return _transaction.turn(_fileIds, turn.degrees);
    }

    bool operator()(const PhotographEdit::RotateAutomatically& /*rotate*/) {
        return change(rotationChange(std::nullopt));
    }

    bool operator()(const PhotographEdit::ResetRotation& /*reset*/) {
        return change(rotationChange(0));
    }

    bool operator()(const PhotographEdit::RenameTag& renamed) {
        const QString name = renamed.name.trimmed();
        const auto row = _tags.find(renamed.tag);
        const auto other = _tags.find(name);
        if (!row || !other) return false;
        if (row->id == 0 || name.isEmpty() || name == row->tag) return true;
        const bool isMerge = other->id != 0 && other->id != row->id;
        if (isMerge) return removeEverywhere(*row, other->tag);
        _stored.inverse = PhotographEdit{
            .fileIds = {}, .change = PhotographEdit::RenameTag{.tag = name, .name = row->tag}};
        _isInverseSet = true;
        const auto fileIds = _tags.fileIdsWith(row->id);
        if (!fileIds || !_tags.rename(row->id, name) || !_transaction.takeTexts(*fileIds))
            return false;
        _stored.hasChanged = true;
        return changeLookedFor(row->tag, name);
    }

    bool operator()(const PhotographEdit::RemoveTag& removed) {
        const auto row = _tags.find(removed.tag);
        return row && (row->id == 0 || removeEverywhere(*row, {}));
    }

    /// Does not go through the ledger.
    bool operator()(const PhotographEdit::Rename& /*rename*/) { return false; }

    [[nodiscard]] bool isInverseSet() const { return _isInverseSet; }

private:
    bool change(const MarksChange& change) {
        return _transaction.store(
            MarksEdit::OfPhotographs{.fileIds = _fileIds, .change = change, .ledgerIds = {}});
    }

    /// Without blanks around them, each once, and as the list of tags spells them.
    std::optional<QStringList> asListed(const QStringList& typed) {
        QStringList tags;
        for (const QString& text : typed) {
            const QString trimmed = text.trimmed();
            if (trimmed.isEmpty() || contains(tags, trimmed)) continue;
            const auto row = _tags.find(trimmed);
            if (!row) return std::nullopt;
            tags += row->id != 0 ? row->tag : trimmed;
        }
        return tags;
    }

    /// Those that end with the same tags go together.
    template <typename Change>
    bool changeEach(const std::vector<qint64>& fileIds, Change changed) {
        const auto held = _transaction.held(fileIds);
        if (!held) return false;
        std::map<QStringList, std::vector<qint64>> byTags;
        for (const MarksLedger::Held& one : *held) {
            const QStringList tags = changed(one.marks.tags);
            if (tags != one.marks.tags) byTags[tags].push_back(one.fileId);
        }
        return std::ranges::all_of(byTags, [&](const auto& part) {
            return _transaction.store(MarksEdit::OfPhotographs{
                .fileIds = part.second,
                .change = {.stars = {}, .flag = {}, .tags = part.first, .rotation = {}},
                .ledgerIds = {}});
        });
    }

    static QStringList replaced(const QStringList& before, const QString& tag, const QString& by) {
        QStringList tags;
        for (const QString& one : before) {
            const QString now = one.compare(tag, Qt::CaseInsensitive) == 0 ? by : one;
            if (!now.isEmpty() && !contains(tags, now)) tags += now;
        }
        return tags;
    }

    /// Another tag, or none, takes its place.
    bool removeEverywhere(const marks::TagRows::Row& row, const QString& by) {
        const auto fileIds = _tags.fileIdsWith(row.id);
        if (!fileIds) return false;
        const bool isRemoved =
            changeEach(
                *fileIds,
                [&](const QStringList& before) { return replaced(before, row.tag, by); }) &&
            changeLookedFor(row.tag, by) && _tags.remove(row.id);
        _transaction.performed().inverse.tagsInList += row.tag;
        _stored.hasChanged = isRemoved;
        return isRemoved;
    }

    bool changeLookedFor(const QString& tag, const QString& by) {
        const auto rows = _tags.lookedForWith(tag);
        return rows && std::ranges::all_of(*rows, [&](const auto& row) {
                   return _transaction.setTagsOfLedgerRow(
                       row.first, replaced(row.second, tag, by), row.second);
               });
    }

    EditTransaction& _transaction;
    const std::vector<qint64>& _fileIds;
    StoredEdit& _stored;
    marks::TagRows _tags;
    bool _isInverseSet = false;
};

std::variant<StoredEdit, QString> storeRename(
    FMDatabase& both, const group::FolderPaths& folders, const PhotographEdit& edit,
    const QString& name) {
    StoredEdit stored{.kind = Kind::Name, .shown = {}, .inverse = {}};
    if (edit.fileIds.size() != 1) return stored;
    const RenameOutcome outcome = renameImageFile(edit.fileIds.front(), name, both, folders);
    if (outcome.result == RenameResult::Failed) return outcome.reason;
    if (outcome.result == RenameResult::Gone) stored.missingCount = 1;
    if (outcome.result != RenameResult::Renamed) return stored;
    stored.hasChanged = true;
    stored.inverse = PhotographEdit{
        .fileIds = edit.fileIds, .change = PhotographEdit::Rename{outcome.formerName}};
    // Of all that is shown the name alone is another.
    stored.shown = {
        {.fileId = edit.fileIds.front(),
         .stars = {},
         .flag = {},
         .rotateAngle = {},
         .fileName = name,
         .ledgerId = {}}};
    return stored;
}

} // namespace

Kind kindOf(const PhotographEdit::Change& change) {
    struct {
        Kind operator()(const PhotographEdit::Rate&) const { return Kind::Stars; }
        Kind operator()(const PhotographEdit::SetFlag&) const { return Kind::Flag; }
        Kind operator()(const PhotographEdit::ToggleFlag&) const { return Kind::Flag; }
        Kind operator()(const PhotographEdit::SetTags&) const { return Kind::Tags; }
        Kind operator()(const PhotographEdit::ChangeTags&) const { return Kind::Tags; }
        Kind operator()(const PhotographEdit::Turn&) const { return Kind::Rotation; }
        Kind operator()(const PhotographEdit::RotateAutomatically&) const { return Kind::Rotation; }
        Kind operator()(const PhotographEdit::ResetRotation&) const { return Kind::Rotation; }
        Kind operator()(const PhotographEdit::Rename&) const { return Kind::Name; }
        Kind operator()(const PhotographEdit::RenameTag&) const { return Kind::TagEverywhere; }
        Kind operator()(const PhotographEdit::RemoveTag&) const { return Kind::TagEverywhere; }
    } constexpr kind;
    return std::visit(kind, change);
}

std::variant<StoredEdit, QString> storePhotographEdit(
    FMDatabase& both, const marks::RootPaths& mountedRoots, const group::FolderPaths& folders,
    const PhotographEdit& edit) {
    if (const auto* rename = std::get_if<PhotographEdit::Rename>(&edit.change))
        return storeRename(both, folders, edit, rename->name);
    StoredEdit stored{.kind = kindOf(edit.change), .shown = {}, .inverse = {}};
    EditTransaction transaction(both, mountedRoots);
    Storing storing(transaction, edit.fileIds, stored);
    if (!std::visit(storing, edit.change)) return transaction.reason();
    PerformedEdit& performed = transaction.performed();
    stored.hasChanged = stored.hasChanged || !performed.fileIds.empty();
    stored.missingCount = performed.missingCount;
    if (!stored.hasChanged) return stored;
    if (!transaction.finish()) return transaction.reason();
    stored.shown = std::move(performed.shown);
    if (!storing.isInverseSet()) stored.inverse = std::move(performed.inverse);
    return stored;
}

} // namespace fileactions
