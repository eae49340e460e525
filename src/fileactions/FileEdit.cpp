#include "fileactions/FileEdit.h"

#include <QSet>

#include <algorithm>

namespace fileactions {

namespace {

using Entry = platform::FileSystem::Entry;

bool isUnchanged(const Entry& made, const Entry& now) {
    return now.kind == made.kind && now.isSameFile(made) && now.size == made.size &&
           now.modified == made.modified;
}

FileOutcome outcomeOf(const RemovalResult& result) {
    FileOutcome outcome{
        .inverse = FileEdit::takingBack(result),
        .made = {},
        .gone = result.deleted,
        .changedRows = {},
        .isCancelled = result.isCancelled,
        .failure = result.failure,
        .failedCount = result.failedCount};
    for (const auto& file : result.trashed)
        outcome.gone.push_back(file.originalPath);
    return outcome;
}

} // namespace

FileEdit FileEdit::takingBack(const TransferResult& result, TransferPlan::Kind kind) {
    if (result.files.empty()) return {};
    if (kind == TransferPlan::Kind::Move) {
        MoveFiles back;
        // The last first: an earlier one may be in its way.
        for (auto file = result.files.rbegin(); file != result.files.rend(); ++file)
            back.paths.emplace_back(file->path, file->source);
        return {std::move(back)};
    }
    DiscardFiles made;
    for (const auto& file : result.files)
        made.files.push_back({file.path, file.made});
    return {std::move(made)};
}

FileEdit FileEdit::takingBack(const RemovalResult& result) {
    if (result.trashed.empty()) return {};
    return {RestoreFiles{result.trashed}};
}

FileOutcome FileEditor::transfer(const TransferPlan& plan) const {
    FileTransfer transfer(
        {.files = _environment.files,
         .temporaries = _environment.temporaries,
         .rows = _environment.rows,
         .prompts = _environment.prompts,
         .copyWord = _environment.copyWord});
    const TransferResult result = transfer.run(plan, _stop);
    FileOutcome outcome;
    outcome.inverse = FileEdit::takingBack(result, plan.kind);
    outcome.isCancelled = result.isCancelled;
    for (const auto& file : result.files) {
        outcome.made.push_back(file.path);
        if (plan.kind == TransferPlan::Kind::Move) outcome.gone.push_back(file.source);
    }
    return outcome;
}

FileOutcome FileEditor::moveToTrash(const std::vector<QByteArray>& paths) const {
    return outcomeOf(removal().moveToTrash(paths, _stop));
}

FileOutcome FileEditor::deleteForGood(const std::vector<QByteArray>& paths) const {
    return outcomeOf(removal().deleteForGood(paths, _stop));
}

FileOutcome FileEditor::perform(const FileEdit& edit) const {
    FileOutcome outcome = performNow(edit);
    outcome.isStillToDo = outcome.inverse.isEmpty() && isToDo(edit);
    return outcome;
}

bool FileEditor::isGone(const QByteArray& path) const {
    Entry entry;
    // A folder that is gone may be that of a disk that is away.
    return _environment.files.look(path, entry) == std::errc::no_such_file_or_directory &&
           !_environment.files.look(platform::folderOfPath(path), entry);
}

bool FileEditor::isToDo(const FileEdit& edit) const {
    if (const auto* moved = std::get_if<FileEdit::MoveFiles>(&edit.change)) {
        return std::ranges::any_of(
            moved->paths, [this](const auto& paths) { return !isGone(paths.first); });
    }
    if (const auto* made = std::get_if<FileEdit::DiscardFiles>(&edit.change)) {
        return std::ranges::any_of(made->files, [this](const auto& file) {
            Entry now;
            const bool isSeen = !_environment.files.look(file.path, now);
            return isSeen ? isUnchanged(file.made, now) : !isGone(file.path);
        });
    }
    const auto* trashed = std::get_if<FileEdit::RestoreFiles>(&edit.change);
    return trashed && std::ranges::any_of(trashed->files, [this](const auto& file) {
               return !isGone(file.trashedPath);
           });
}

FileOutcome FileEditor::performNow(const FileEdit& edit) const {
    if (const auto* moved = std::get_if<FileEdit::MoveFiles>(&edit.change)) return move(*moved);
    if (const auto* made = std::get_if<FileEdit::DiscardFiles>(&edit.change)) return discard(*made);
    if (const auto* trashed = std::get_if<FileEdit::RestoreFiles>(&edit.change))
        return restore(*trashed);
    return {};
}

FileOutcome FileEditor::move(const FileEdit::MoveFiles& edit) const {
    TransferPlan plan{.kind = TransferPlan::Kind::Move, .steps = {}};
    QSet<QByteArray> folders;
    for (const auto& [path, toPath] : edit.paths) {
        const QByteArray folder = platform::folderOfPath(toPath);
        if (!folders.contains(folder)) {
            folders.insert(folder);
            plan.addFolder(folder);
        }
        plan.addFile({.source = path, .folder = folder, .name = platform::nameOfPath(toPath)});
    }
    return transfer(plan);
}

FileOutcome FileEditor::discard(const FileEdit::DiscardFiles& edit) const {
    std::vector<QByteArray> paths;
    for (const auto& file : edit.files) {
        Entry now;
        if (!_environment.files.look(file.path, now) && isUnchanged(file.made, now))
            paths.push_back(file.path);
    }
    return moveToTrash(paths);
}

FileOutcome FileEditor::restore(const FileEdit::RestoreFiles& edit) const {
    const RemovalResult result = removal().restore(edit.files, _stop);
    FileOutcome outcome{
        .inverse = {},
        .made = {},
        .gone = {},
        .changedRows = {},
        .isCancelled = result.isCancelled,
        .failure = result.failure,
        .failedCount = result.failedCount};
    FileEdit::DiscardFiles back;
    for (const auto& file : result.trashed) {
        outcome.made.push_back(file.originalPath);
        _environment.rows.returned(file.originalPath);
        Entry now;
        if (!_environment.files.look(file.originalPath, now))
            back.files.push_back({file.originalPath, now});
    }
    _environment.rows.settle();
    if (!back.files.empty()) outcome.inverse = {std::move(back)};
    return outcome;
}

} // namespace fileactions
