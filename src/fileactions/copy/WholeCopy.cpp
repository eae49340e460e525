#include "fileactions/copy/WholeCopy.h"

#include "fileactions/copy/SamePlace.h"
#include "platform/files/PathNames.h"

#include <utility>

using platform::FileSystem;
using platform::folderOfPath;

namespace fileactions {

namespace {

std::error_code canceled() {
    return std::make_error_code(std::errc::operation_canceled);
}

} // namespace

std::error_code WholeCopy::checkPlace(const QByteArray& destination, IfTaken ifTaken) {
    Entry entry;
    if (_environment.files.look(destination, entry)) return {};
    if (ifTaken == IfTaken::Refuse) return std::make_error_code(std::errc::file_exists);
    const bool isFolder = entry.kind == FileSystem::Kind::Folder;
    return isFolder ? std::make_error_code(std::errc::is_a_directory) : std::error_code();
}

std::error_code
WholeCopy::fill(int from, const Entry& source, int to, const std::stop_token& stop) {
    std::int64_t size = 0;
    while (true) {
        if (stop.stop_requested()) return canceled();
        std::int64_t copied = 0;
        if (const auto error = _environment.files.copySome(from, to, copied)) return error;
        if (copied == 0) break;
        size += copied;
        _told += copied;
        _environment.copied(copied);
    }
    // A disk that left half-way may end a file early.
    if (size < source.size) return std::make_error_code(std::errc::io_error);
    return _environment.files.copyAttributes(from, to);
}

std::error_code
WholeCopy::giveName(const QByteArray& path, const QByteArray& destination, IfTaken ifTaken) {
    _environment.namesWillChange();
    const auto error = ifTaken == IfTaken::Replace
                           ? _environment.files.renameOver(path, destination)
                           : _environment.files.renameToFree(path, destination);
    _isInPlace = !error;
    return error;
}

void WholeCopy::letGo(const QByteArray& path, const std::error_code& error) {
    if (error) {
        _environment.temporaries.discard(path);
    } else {
        _environment.temporaries.wasTaken();
    }
}

std::error_code WholeCopy::finish(
    int file, std::error_code error, const QByteArray& path, const QByteArray& destination,
    IfTaken ifTaken, Sync sync) {
    FileSystem& files = _environment.files;
    const bool isSynced = sync == Sync::Yes || ifTaken == IfTaken::Replace;
    if (!error && isSynced) error = files.sync(file);
    if (const auto late = files.close(file); !error) error = late;
    if (!error) error = giveName(path, destination, ifTaken);
    letGo(path, error);
    if (error || !isSynced) return error;
    error = files.syncFolder(folderOfPath(destination));
    // What was in its place is gone already.
    if (error && ifTaken == IfTaken::Refuse) static_cast<void>(files.remove(destination));
    return error;
}

std::error_code WholeCopy::copyWhole(
    const QByteArray& source, const QByteArray& destination, IfTaken ifTaken, Sync sync,
    const std::stop_token& stop) {
    FileSystem& files = _environment.files;
    _isInPlace = false;
    if (const auto error = checkPlace(destination, ifTaken)) return error;
    _environment.willTakeTime();
    int from = -1;
    if (const auto error = files.openSource(source, from, _source)) return error;
    _told = 0;
    int to = -1;
    QByteArray path;
    std::error_code error = _environment.temporaries.create(folderOfPath(destination), path, to);
    if (!error) {
        error = fill(from, _source, to, stop);
        error = finish(to, error, path, destination, ifTaken, sync);
    }
    static_cast<void>(files.close(from));
    if (error) _environment.copied(-std::exchange(_told, 0));
    return error;
}

std::error_code WholeCopy::copy(
    const QByteArray& source, const QByteArray& destination, IfTaken ifTaken,
    const std::stop_token& stop) {
    return copyWhole(source, destination, ifTaken, Sync::No, stop);
}

std::error_code
WholeCopy::write(const QByteArray& content, const QByteArray& destination, IfTaken ifTaken) {
    _isInPlace = false;
    if (const auto error = checkPlace(destination, ifTaken)) return error;
    int to = -1;
    QByteArray path;
    if (const auto error = _environment.temporaries.create(folderOfPath(destination), path, to))
        return error;
    // There is no other file that it takes its permissions from.
    _environment.files.permitAsOrdinary(to);
    return finish(to, _environment.files.write(to, content), path, destination, ifTaken, Sync::Yes);
}

std::error_code WholeCopy::checkSource(const QByteArray& source) {
    Entry now;
    const auto error = _environment.files.look(source, now);
    if (error == std::errc::no_such_file_or_directory) return {}; // as its removal finds
    if (error) return error;
    const bool isAsCopied =
        now.isSameFile(_source) && now.size == _source.size && now.modified == _source.modified;
    return isAsCopied ? std::error_code() : std::make_error_code(std::errc::text_file_busy);
}

std::error_code
WholeCopy::removeSource(const QByteArray& source, const QByteArray& destination, IfTaken ifTaken) {
    const auto error = _environment.files.remove(source);
    return error ? afterFailure(error, source, destination, ifTaken) : error;
}

std::error_code WholeCopy::afterFailure(
    const std::error_code& error, const QByteArray& source, const QByteArray& destination,
    IfTaken ifTaken) {
    Entry entry;
    const auto look = _environment.files.look(source, entry);
    // Somebody else was quicker: the other end is all that there is now.
    if (look == std::errc::no_such_file_or_directory) return {};
    // All is as it was, but where the other end has lost its former file already. Of a source that
    // can't be looked at, as on a disk that has left, the other end may be all that there is.
    if (!look && ifTaken == IfTaken::Refuse)
        static_cast<void>(_environment.files.remove(destination));
    return error;
}

std::error_code
WholeCopy::moveLink(const QByteArray& source, const QByteArray& destination, IfTaken ifTaken) {
    FileSystem& files = _environment.files;
    if (leadsOver(files, source, destination))
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    QByteArray target;
    if (const auto error = files.readLink(source, target)) return error;
    if (!target.startsWith('/')) target = platform::pathInFolder(folderOfPath(source), target);
    const QByteArray path = _environment.temporaries.reserve(folderOfPath(destination));
    if (const auto error = files.makeLink(target, path)) {
        _environment.temporaries.wasTaken();
        return error;
    }
    const auto error = giveName(path, destination, ifTaken);
    letGo(path, error);
    return error ? error : removeSource(source, destination, ifTaken);
}

bool WholeCopy::isOtherName(
    const Entry& entry, const QByteArray& source, const QByteArray& destination) {
    Entry there;
    // In every respect: where a program joins several disks, numbers alone may be those of two.
    return entry.names > 1 && !_environment.files.look(destination, there) && there == entry &&
           !isSamePlace(_environment.files, source, destination);
}

std::error_code WholeCopy::dropName(const QByteArray& source) {
    _environment.namesWillChange();
    const auto error = _environment.files.remove(source);
    _isInPlace = !error;
    return error;
}

std::error_code WholeCopy::move(
    const QByteArray& source, const QByteArray& destination, IfTaken ifTaken,
    const std::stop_token& stop) {
    FileSystem& files = _environment.files;
    _isInPlace = false;
    if (stop.stop_requested()) return canceled();
    if (const auto error = checkPlace(destination, ifTaken)) return error;
    Entry entry;
    if (const auto error = files.look(source, entry)) return error;
    if (entry.kind == FileSystem::Kind::Link) return moveLink(source, destination, ifTaken);
    if (entry.kind != FileSystem::Kind::File)
        return std::make_error_code(std::errc::is_a_directory);
    if (isOtherName(entry, source, destination)) return dropName(source);
    Entry folder;
    const bool isOtherDisk = !files.look(folderOfPath(destination), folder) &&
                             folder.kind == FileSystem::Kind::Folder &&
                             folder.device != entry.device;
    if (!isOtherDisk) {
        const auto renamed = giveName(source, destination, ifTaken);
        if (!renamed) _environment.copied(entry.size);
        // One disk may be mounted at two places.
        if (renamed != std::errc::cross_device_link) return renamed;
    }
    if (const auto error = copyWhole(source, destination, ifTaken, Sync::Yes, stop)) return error;
    // What was written into it meanwhile is nowhere else.
    auto error = checkSource(source);
    error = error ? afterFailure(error, source, destination, ifTaken)
                  : removeSource(source, destination, ifTaken);
    if (error) _environment.copied(-std::exchange(_told, 0));
    return error;
}

} // namespace fileactions
