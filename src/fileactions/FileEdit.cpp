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
        .rest = {},
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

/// Those of the files whose path is one of these.
template <typename File>
std::vector<File> amongThese(
    const std::vector<QByteArray>& paths, const std::vector<File>& files,
    const QByteArray& (*pathOf)(const File&)) {
    const QSet<QByteArray> wanted(paths.begin(), paths.end());
    std::vector<File> found;
    std::ranges::copy_if(files, std::back_inserter(found), [&](const File& file) {
        return wanted.contains(pathOf(file));
    });
    return found;
}

constexpr std::uint32_t ordinaryFolder = 0777; // less what the user's mask takes away

} // namespace

FileEdit FileEdit::takingBack(const TransferResult& result, TransferPlan::Kind kind) {
    FileEdit edit;
    edit.removedAfter.assign(result.folders.rbegin(), result.folders.rend());
    if (result.files.empty()) return edit;
    if (kind == TransferPlan::Kind::Move) {
        MoveFiles back;
        // The last first: an earlier one may be in its way.
        for (auto file = result.files.rbegin(); file != result.files.rend(); ++file)
            back.paths.emplace_back(file->path, file->source);
        edit.change = std::move(back);
        return edit;
    }
    DiscardFiles made;
    for (const auto& file : result.files)
        made.files.push_back({file.path, file.made});
    edit.change = std::move(made);
    return edit;
}

FileEdit FileEdit::takingBack(const RemovalResult& result) {
    FileEdit edit;
    if (!result.trashed.empty()) edit.change = RestoreFiles{result.trashed};
    return edit;
}

FileOutcome FileEditor::transfer(const TransferPlan& plan) const {
    std::vector<QByteArray> left;
    return transfer(plan, left);
}

FileOutcome FileEditor::transfer(const TransferPlan& plan, std::vector<QByteArray>& left) const {
    FileTransfer transfer(
        {.files = _environment.files,
         .temporaries = _environment.temporaries,
         .rows = _environment.rows,
         .prompts = _environment.prompts,
         .copyWord = _environment.copyWord});
    TransferResult result = transfer.run(plan, _stop);
    left = std::move(result.left);
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
    std::vector<QByteArray> made;
    for (const QByteArray& folder : edit.madeBefore)
        if (!_environment.files.makeFolder(folder, ordinaryFolder))
            made.insert(made.begin(), folder);
    FileOutcome outcome = performNow(edit);
    FileEdit& inverse = outcome.inverse;
    inverse.removedAfter.insert(inverse.removedAfter.end(), made.begin(), made.end());
    outcome.isStillToDo = !inverse.changesFiles() && isToDo(edit);
    if (outcome.isStillToDo) {
        static_cast<void>(removeFolders(inverse.removedAfter));
        inverse = {};
        outcome.rest = {};
    } else if (outcome.rest.changesFiles()) {
        outcome.rest.madeBefore = edit.madeBefore;
        outcome.rest.removedAfter = edit.removedAfter;
    } else {
        const std::vector<QByteArray> removed = removeFolders(edit.removedAfter);
        inverse.madeBefore.assign(removed.rbegin(), removed.rend());
    }
    return outcome;
}

std::vector<QByteArray> FileEditor::removeFolders(const std::vector<QByteArray>& folders) const {
    std::vector<QByteArray> removed;
    for (const QByteArray& folder : folders)
        if (!_environment.files.removeFolder(folder)) removed.push_back(folder);
    return removed;
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
    std::vector<QByteArray> left;
    FileOutcome outcome = transfer(plan, left);
    using Paths = std::pair<QByteArray, QByteArray>;
    auto rest = amongThese<Paths>(
        left, edit.paths, [](const Paths& paths) -> const QByteArray& { return paths.first; });
    if (!rest.empty()) outcome.rest.change = FileEdit::MoveFiles{std::move(rest)};
    return outcome;
}

FileOutcome FileEditor::discard(const FileEdit::DiscardFiles& edit) const {
    std::vector<QByteArray> paths;
    for (const auto& file : edit.files) {
        Entry now;
        if (!_environment.files.look(file.path, now) && isUnchanged(file.made, now))
            paths.push_back(file.path);
    }
    const RemovalResult result = removal().moveToTrash(paths, _stop);
    FileOutcome outcome = outcomeOf(result);
    using File = FileEdit::DiscardFiles::File;
    auto rest = amongThese<File>(
        result.left, edit.files, [](const File& file) -> const QByteArray& { return file.path; });
    if (!rest.empty()) outcome.rest.change = FileEdit::DiscardFiles{std::move(rest)};
    return outcome;
}

FileOutcome FileEditor::restore(const FileEdit::RestoreFiles& edit) const {
    const RemovalResult result = removal().restore(edit.files, _stop);
    FileOutcome outcome;
    outcome.isCancelled = result.isCancelled;
    outcome.failure = result.failure;
    outcome.failedCount = result.failedCount;
    FileEdit::DiscardFiles back;
    for (const auto& file : result.trashed) {
        outcome.made.push_back(file.originalPath);
        _environment.rows.returned(file.originalPath);
        Entry now;
        if (!_environment.files.look(file.originalPath, now))
            back.files.push_back({file.originalPath, now});
    }
    _environment.rows.settle();
    if (!back.files.empty()) outcome.inverse.change = std::move(back);
    using File = platform::TrashedFile;
    auto rest =
        amongThese<File>(result.left, edit.files, [](const File& file) -> const QByteArray& {
            return file.originalPath;
        });
    if (!rest.empty()) outcome.rest.change = FileEdit::RestoreFiles{std::move(rest)};
    return outcome;
}

} // namespace fileactions
