#include "fileactions/copy/FileTransfer.h"

#include "fileactions/copy/DuplicateNames.h"
#include "fileactions/copy/SamePlace.h"
#include "platform/files/PathNames.h"

#include <QFile>

using platform::FileSystem;
using platform::folderOfPath;
using platform::nameOfPath;
using platform::pathInFolder;

namespace fileactions {

namespace {

using Kind = TransferPlan::Kind;

constexpr std::uint32_t ordinaryFolder = 0777; // less what the user's mask takes away

bool isGone(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

} // namespace

FileTransfer::FileTransfer(const Environment& environment)
    : _environment(environment), _copy(
                                     {.files = environment.files,
                                      .temporaries = environment.temporaries,
                                      .copied =
                                          [this](std::int64_t bytes) {
                                              _progress.bytes += bytes;
                                              _environment.prompts.progress(_progress);
                                          },
                                      .namesWillChange =
                                          [this] {
                                              if (_changesRows) _environment.rows.begin();
                                          },
                                      .willTakeTime = [this] { _environment.rows.settle(); }}) {}

TransferResult FileTransfer::run(const TransferPlan& plan, const std::stop_token& stop) {
    _kind = plan.kind;
    _endsAtFailure = plan.endsAtFailure;
    _stop = stop;
    _result = {};
    _forAll.reset();
    _isForOwn = false;
    _moved.clear();
    _isCounted = true;
    _progress = {};
    _progress.total = plan.fileCount();
    FileSystem::Entry entry;
    for (const auto& step : plan.steps) {
        if (stop.stop_requested()) break; // a slow disk takes its time
        // What is yet to be made has no size.
        if (step.folder.isEmpty() && !step.file.make &&
            !_environment.files.look(step.file.source, entry))
            _progress.totalBytes += entry.size;
    }
    auto step = plan.steps.begin();
    for (; step != plan.steps.end(); ++step) {
        _result.isCancelled = stop.stop_requested();
        if (_result.isCancelled) break;
        const Next next =
            step->folder.isEmpty() ? transferFile(step->file) : makeFolder(step->folder);
        if (next == Next::Stop) break;
    }
    for (; step != plan.steps.end(); ++step)
        if (step->folder.isEmpty()) _result.left.push_back(step->file.source);
    _environment.rows.settle();
    return std::move(_result);
}

QByteArray FileTransfer::spelled(const QByteArray& path) const {
    const QString text = QFile::decodeName(path);
    // Of a name in another encoding only the bytes are known.
    if (QFile::encodeName(text) != path) return path;
    return QFile::encodeName(platform::spelledAsOnDisk(text, _environment.names));
}

QByteArray FileTransfer::realFolder(const QByteArray& folder) {
    auto known = _realFolders.find(folder);
    if (known == _realFolders.end()) known = _realFolders.insert(folder, spelled(folder));
    return *known;
}

FileTransfer::Next FileTransfer::makeFolder(const QByteArray& folder) {
    FileSystem& files = _environment.files;
    if (_failedFolders.contains(folderOfPath(folder))) {
        _failedFolders.insert(folder);
        return Next::File;
    }
    std::error_code error;
    const QByteArray above = realFolder(folderOfPath(folder));
    const QByteArray name = nameOfPath(folder);
    for (const QByteArray& tried : {name, portableFolderName(name)}) {
        QByteArray path = pathInFolder(above, tried);
        error = files.makeFolder(path, ordinaryFolder);
        if (!error) _result.folders.push_back(path);
        if (error == std::errc::file_exists) {
            path = spelled(path);
            // Also a link to one will do.
            FileSystem::Entry inside;
            error = files.look(path + "/.", inside);
        }
        if (!error) {
            _realFolders.insert(folder, path);
            return Next::File;
        }
        if (error != std::errc::invalid_argument && error != std::errc::illegal_byte_sequence)
            break;
    }
    _failedFolders.insert(folder);
    _environment.rows.settle();
    const bool goesOn = _environment.prompts.askSkip(
        {.path = pathInFolder(above, name), .destination = {}, .error = error});
    return goesOn ? Next::File : Next::Stop;
}

bool FileTransfer::isOwnPlace(const QByteArray& source, const QByteArray& destination) const {
    return isSamePlace(_environment.files, source, destination) ||
           leadsOver(_environment.files, source, destination);
}

FileTransfer::Next FileTransfer::transferFile(const File& file) {
    if (_isCounted) ++_progress.number;
    _isCounted = file.isCounted;
    _progress.path = file.source;
    _progress.fileId = file.fileId;
    _environment.prompts.progress(_progress);
    if (_failedFolders.contains(file.folder)) return Next::File;

    const QByteArray folder = realFolder(file.folder);
    const QByteArray destination = pathInFolder(folder, file.name);
    if (file.make && !file.content) return transferMade(file, destination);
    std::error_code error;
    if (!file.content) {
        FileSystem::Entry entry;
        if (isGone(_environment.files.look(file.source, entry))) return Next::File;
        if (_kind == Kind::Move && isSamePlace(_environment.files, file.source, destination))
            return Next::File;
        const bool isDuplicate = _kind == Kind::Duplicate ||
                                 (_kind == Kind::Copy && isOwnPlace(file.source, destination));
        if (isDuplicate) {
            error = duplicate(file, folder);
        } else {
            error = perform(file, destination, IfTaken::Refuse);
        }
        // It may have gone at this moment.
        if (isGone(error) && isGone(_environment.files.look(file.source, entry))) return Next::File;
    } else {
        error = transferNew(file, destination);
    }
    if (!error) return Next::File;
    if (error == std::errc::file_exists) return resolveConflict(file, destination);
    return fail({.path = file.source, .destination = destination, .error = error});
}

std::error_code FileTransfer::transferNew(const File& file, const QByteArray& destination) {
    File made;
    if (file.make) {
        made = file;
        if (const auto error = file.make(_stop, *made.content)) return error;
    }
    const File& whole = file.make ? made : file;
    const auto error = perform(whole, destination, IfTaken::Refuse);
    return error == std::errc::file_exists ? duplicate(whole, folderOfPath(destination)) : error;
}

FileTransfer::Next FileTransfer::transferMade(const File& file, const QByteArray& destination) {
    const bool isSame = isOwnPlace(file.source, destination);
    std::error_code error = ownPlace;
    if (isSame && file.replaces) return fail({file.source, destination, error});
    bool replaces = file.replaces;
    FileSystem::Entry entry;
    // Asked first: what is not wanted need not be made.
    if (!isSame && !replaces && !_environment.files.look(destination, entry)) {
        const auto answer = answerToConflict(file, destination);
        if (answer != FilePrompts::Answer::Replace)
            return answer == FilePrompts::Answer::Skip ? Next::File : Next::Stop;
        replaces = true;
    }
    File made = file;
    made.make = {};
    made.content.emplace();
    error = file.make(_stop, *made.content);
    if (error == std::errc::operation_canceled) return fail({file.source, destination, error});
    if (error) return leaveOut({.path = file.source, .destination = destination, .error = error});
    if (replaces && !file.replaces) return replace(made, destination);
    if (isSame) {
        error = duplicate(made, realFolder(file.folder));
    } else {
        error = perform(made, destination, replaces ? IfTaken::Replace : IfTaken::Refuse);
        // It has come to be meanwhile.
        if (error == std::errc::file_exists) return resolveConflict(made, destination);
    }
    return error ? fail({.path = file.source, .destination = destination, .error = error})
                 : Next::File;
}

FileTransfer::Next FileTransfer::leaveOut(const FileFailure& failure) {
    // Of a single one there is nothing to go on with.
    if (_progress.total == 1 || _endsAtFailure) return fail(failure);
    _environment.rows.settle();
    return _environment.prompts.askSkip(failure) ? Next::File : Next::Stop;
}

FilePrompts::Answer
FileTransfer::answerToConflict(const File& file, const QByteArray& destination) {
    using Answer = FilePrompts::Answer;
    // An answer for all is about files that were there before. What was moved here just now may be
    // the only one of its kind.
    const bool isOwn = hasMovedTo(destination);
    const bool isAsked = !_forAll || (isOwn && !_isForOwn && _forAll == Answer::Replace);
    Answer answer = _forAll.value_or(Answer::Stop);
    if (isAsked) {
        _environment.rows.settle();
        const auto given = _environment.prompts.askConflict(
            {.path = file.source,
             .destination = destination,
             .error = std::make_error_code(std::errc::file_exists)});
        answer = given.answer;
        if (given.applyToAll && answer != Answer::Stop) _forAll = answer;
        if (given.applyToAll) _isForOwn = isOwn;
    }
    return answer;
}

FileTransfer::Next FileTransfer::resolveConflict(const File& file, const QByteArray& destination) {
    switch (answerToConflict(file, destination)) {
    case FilePrompts::Answer::Replace:
        return replace(file, destination);
    case FilePrompts::Answer::Skip:
        return Next::File;
    case FilePrompts::Answer::Stop:
        break;
    }
    return Next::Stop;
}

bool FileTransfer::hasMovedTo(const QByteArray& destination) const {
    if (_kind != Kind::Move) return false;
    FileSystem::Entry entry;
    return _environment.files.look(destination, entry) ||
           _moved.contains({entry.device, entry.inode});
}

FileTransfer::Next FileTransfer::replace(const File& file, const QByteArray& destination) {
    const auto error = perform(file, destination, IfTaken::Replace);
    if (!error) return Next::File;
    if (error == std::errc::operation_canceled) return fail({file.source, destination, error});
    FileSystem::Entry entry;
    if (isGone(_environment.files.look(file.source, entry))) return Next::File;
    _environment.rows.settle();
    const bool goesOn = _environment.prompts.askSkip(
        {.path = file.source, .destination = destination, .error = error});
    return goesOn ? Next::File : Next::Stop;
}

FileTransfer::Next FileTransfer::fail(const FileFailure& failure) {
    _environment.rows.settle();
    if (failure.error == std::errc::operation_canceled) {
        _result.isCancelled = true;
    } else {
        _environment.prompts.tellFailure(failure);
    }
    return Next::Stop;
}

std::error_code FileTransfer::perform(const File& file, const QByteArray& wanted, IfTaken ifTaken) {
    const bool isReplacement = ifTaken == IfTaken::Replace;
    // Where the disk takes "IMG.JPG" for "img.jpg", that is what it is called from now on, too: so
    // the catalogue has one file there, as the disk has.
    const QByteArray destination = isReplacement ? spelled(wanted) : wanted;
    const bool isMove = _kind == Kind::Move && !file.content;
    _changesRows = isReplacement || isMove;
    std::error_code error;
    if (file.content) {
        error = _copy.write(*file.content, destination, ifTaken);
    } else if (isMove) {
        error = _copy.move(file.source, destination, ifTaken, _stop);
    } else {
        error = _copy.copy(file.source, destination, ifTaken, _stop);
    }
    // Also by a move whose source could not go.
    if (isReplacement && _copy.isInPlace()) _environment.rows.replaced(destination);
    if (error) return error;
    if (isMove) _environment.rows.moved(file.source, destination);
    note(file, destination, isReplacement);
    return {};
}

std::error_code FileTransfer::duplicate(const File& file, const QByteArray& folder) {
    const DuplicateNames names(file.name, _environment.copyWord);
    _changesRows = false;
    for (std::int64_t n = 0;; ++n) {
        const QByteArray path = pathInFolder(folder, names.name(n));
        const auto error = file.content ? _copy.write(*file.content, path, IfTaken::Refuse)
                                        : _copy.copy(file.source, path, IfTaken::Refuse, _stop);
        if (error == std::errc::file_exists && !_stop.stop_requested()) continue;
        if (!error) note(file, path, false);
        return error;
    }
}

void FileTransfer::note(const File& file, const QByteArray& path, bool isReplacement) {
    TransferResult::File done{
        .source = file.source, .path = path, .made = {}, .isReplacement = isReplacement};
    if (!_environment.files.look(path, done.made))
        _moved.insert({done.made.device, done.made.inode});
    _result.files.push_back(std::move(done));
}

} // namespace fileactions
