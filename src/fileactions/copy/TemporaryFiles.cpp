#include "fileactions/copy/TemporaryFiles.h"

#include "platform/files/PathNames.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSaveFile>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace fileactions {

namespace {

const QByteArray prefix = QByteArrayLiteral(".velmora-");
const QByteArray suffix = QByteArrayLiteral(".part");
constexpr int namesToTry = 100;
/// Those of disks that never come back are forgotten at last.
constexpr qsizetype mostKept = 1000;

QByteArray freshName() {
    constexpr int digits = 16;
    const QByteArray number = QByteArray::number(QRandomGenerator::global()->generate64(), 16);
    return prefix + number.rightJustified(digits, '0') + suffix;
}

/// Whether there is nothing more to do about it.
bool removeOne(platform::FileSystem& files, const QByteArray& path) {
    using Entry = platform::FileSystem::Entry;
    if (!TemporaryFiles::isTemporaryName(platform::nameOfPath(path))) return true;
    Entry entry;
    const std::error_code error = files.look(path, entry);
    if (!error) return !files.remove(path);
    // A folder that is gone may be that of a disk that is away.
    return error == std::errc::no_such_file_or_directory &&
           !files.look(platform::folderOfPath(path), entry);
}

} // namespace

TemporaryFiles::TemporaryFiles(platform::FileSystem& files, QByteArray journalPath)
    : _files(files), _journalPath(std::move(journalPath)) {}

TemporaryFiles::~TemporaryFiles() {
    if (_journal >= 0) ::close(_journal);
}

bool TemporaryFiles::isTemporaryName(const QByteArray& name) {
    return name.startsWith(prefix) && name.endsWith(suffix);
}

void TemporaryFiles::note(const QByteArray& path) {
    ++_pending;
    if (_journalPath.isEmpty()) return;
    if (_journal < 0) {
        _journal =
            ::open(_journalPath.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (_journal < 0) return;
        _kept = ::lseek(_journal, 0, SEEK_END);
    }
    // Without a place for it the photograph itself is still worth writing.
    const QByteArray line = path.toPercentEncoding("/") + '\n';
    static_cast<void>(_files.write(_journal, line));
}

QByteArray TemporaryFiles::reserve(const QByteArray& folder) {
    const QByteArray path = platform::pathInFolder(folder, freshName());
    note(path);
    return path;
}

std::error_code TemporaryFiles::create(const QByteArray& folder, QByteArray& path, int& file) {
    std::error_code error = std::make_error_code(std::errc::file_exists);
    for (int attempt = 0; attempt < namesToTry && error == std::errc::file_exists; ++attempt) {
        path = reserve(folder);
        error = _files.create(path, file);
        if (error) wasTaken();
    }
    return error;
}

void TemporaryFiles::wasTaken() {
    if (--_pending == 0 && _journal >= 0) static_cast<void>(::ftruncate(_journal, _kept) == 0);
}

void TemporaryFiles::discard(const QByteArray& path) {
    if (!removeOne(_files, path) && _journal >= 0) _kept = ::lseek(_journal, 0, SEEK_END);
    wasTaken();
}

void TemporaryFiles::removeLeft(platform::FileSystem& files, const QByteArray& journalPath) {
    QFile journal(QFile::decodeName(journalPath));
    if (journalPath.isEmpty() || !journal.open(QIODevice::ReadOnly)) return;
    QList<QByteArray> lines = journal.readAll().split('\n');
    journal.close();
    lines.removeIf([&](const QByteArray& line) {
        return line.isEmpty() || removeOne(files, QByteArray::fromPercentEncoding(line));
    });
    if (lines.isEmpty()) {
        journal.remove();
        return;
    }
    QSaveFile kept(journal.fileName());
    if (!kept.open(QIODevice::WriteOnly)) return;
    kept.write(lines.last(std::min(lines.size(), mostKept)).join('\n') + '\n');
    kept.commit();
}

} // namespace fileactions
