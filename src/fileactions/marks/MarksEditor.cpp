#include "fileactions/marks/MarksEditor.h"

#include "FMDB/FMDatabase.h"
#include "group/ItemLookup.h"
#include "platform/tasks/MainThread.h"

#include <unordered_map>

namespace fileactions {

MarksEditor::Outcome MarksEditor::perform(const MarksEdit& edit) {
    platform::assertMainThread();
    Outcome outcome;
    FMDatabase* both = _environment.connection();
    if (!both) {
        outcome.reason = QStringLiteral("the ledger of marks can't be opened");
        return outcome;
    }
    auto stored = storeEdit(*both, _environment.mountedRoots(), edit);
    if (const auto* reason = std::get_if<QString>(&stored)) {
        outcome.reason = *reason;
        return outcome;
    }
    outcome.isStored = true;
    outcome.performed = std::get<PerformedEdit>(std::move(stored));
    std::unordered_set<qint64> wanted(
        outcome.performed.fileIds.begin(), outcome.performed.fileIds.end());
    const PBImageFileList shown = group::takeItemsWithIds(_environment.liveTree(), wanted);
    refresh(shown);
    if (!wanted.empty()) _environment.findInWorkTree({wanted.begin(), wanted.end()});
    _environment.ledgerDidChange();
    return outcome;
}

void MarksEditor::refresh(const PBImageFileList& items) {
    platform::assertMainThread();
    FMDatabase* both = items.empty() ? nullptr : _environment.connection();
    if (!both) return;
    std::unordered_map<qint64, std::shared_ptr<PBImageFileItem>> byId;
    QString ids;
    for (const auto& item : items) {
        byId.emplace(item->fileId(), item);
        ids += (ids.isEmpty() ? u'[' : u',') + QString::number(item->fileId());
    }
    FMResultSet row = both->executeQuery(
        QStringLiteral("select Id,FileStars,FileFlag,RotateAngle from ImageFile "
                       "where Id in (select value from json_each(?))"),
        QString(ids + u']'));
    while (row.next()) {
        PBImageFileItem& item = *byId.at(row.longLongIntForColumnIndex(0));
        item.setStar(static_cast<quint64>(std::max<qint64>(row.longLongIntForColumnIndex(1), 0)));
        item.setFlagged(row.intForColumnIndex(2) != 0);
        item.setRotateAngle(row.doubleForColumnIndex(3));
    }
    // Tags are read when the items are put to their new places.
    _environment.regroup(items);
}

} // namespace fileactions
