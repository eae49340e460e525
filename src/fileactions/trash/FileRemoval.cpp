#include "fileactions/trash/FileRemoval.h"

namespace fileactions {

void FileRemoval::note(
    RemovalResult& result, const QByteArray& path, const std::error_code& error) const {
    platform::FileSystem::Entry entry;
    const bool isGone = error == std::errc::no_such_file_or_directory &&
                        _files.look(path, entry) == std::errc::no_such_file_or_directory;
    if (isGone) return;
    if (result.failedCount++ == 0)
        result.failure = {.path = path, .destination = {}, .error = error};
}

bool FileRemoval::begin(
    RemovalResult& result, const QByteArray& path, const std::stop_token& stop) {
    result.isCancelled = stop.stop_requested();
    if (result.isCancelled) return false;
    ++_progress.number;
    _progress.path = path;
    _prompts.progress(_progress);
    return true;
}

RemovalResult
FileRemoval::moveToTrash(const std::vector<QByteArray>& paths, const std::stop_token& stop) {
    RemovalResult result;
    std::vector<QByteArray> withoutTrash;
    _progress = {};
    _progress.total = std::ssize(paths);
    for (auto next = paths.begin(); next != paths.end(); ++next) {
        const QByteArray& path = *next;
        if (!begin(result, path, stop)) {
            result.left = std::move(withoutTrash);
            result.left.insert(result.left.end(), next, paths.end());
            return result;
        }
        platform::TrashedFile trashed;
        const auto error = _trash.trash(path, trashed);
        if (error == std::errc::not_supported) {
            withoutTrash.push_back(path);
        } else if (error) {
            note(result, path, error);
        } else {
            result.trashed.push_back(std::move(trashed));
        }
    }
    if (withoutTrash.empty() || !_prompts.askDeleteForGood(std::ssize(withoutTrash))) return result;
    deleteAll(withoutTrash, result, stop);
    return result;
}

RemovalResult
FileRemoval::deleteForGood(const std::vector<QByteArray>& paths, const std::stop_token& stop) {
    RemovalResult result;
    deleteAll(paths, result, stop);
    return result;
}

void FileRemoval::deleteAll(
    const std::vector<QByteArray>& paths, RemovalResult& result, const std::stop_token& stop) {
    _progress = {};
    _progress.total = std::ssize(paths);
    for (auto next = paths.begin(); next != paths.end(); ++next) {
        const QByteArray& path = *next;
        if (!begin(result, path, stop)) {
            result.left.assign(next, paths.end());
            return;
        }
        const auto error = _files.remove(path);
        if (error) {
            note(result, path, error);
        } else {
            result.deleted.push_back(path);
        }
    }
}

RemovalResult FileRemoval::restore(
    const std::vector<platform::TrashedFile>& trashed, const std::stop_token& stop) {
    RemovalResult result;
    _progress = {};
    _progress.total = std::ssize(trashed);
    for (const platform::TrashedFile& file : trashed) {
        if (result.isCancelled || !begin(result, file.originalPath, stop)) {
            result.left.push_back(file.originalPath);
            continue;
        }
        const auto error = _trash.restore(file);
        if (!error) {
            result.trashed.push_back(file);
        } else if (result.failedCount++ == 0) {
            // Emptied since, or its place is taken: either is to be told.
            result.failure = {
                .path = file.originalPath, .destination = file.originalPath, .error = error};
        }
    }
    return result;
}

} // namespace fileactions
