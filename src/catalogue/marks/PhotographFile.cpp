#include "catalogue/marks/PhotographFile.h"

#include "platform/files/FileManager.h"

#include <QCryptographicHash>
#include <QFile>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace marks {

namespace {

bool isSameDate(const Trace& trace, const platform::ResourceValues& values) {
    return values.fileSize == trace.size && values.modificationDate == trace.modificationDate;
}

} // namespace

QByteArray digestOfFile(const QByteArray& path, const std::function<bool()>& isCancelled) {
    // A pipe that took the file's place must not be waited for.
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::array<char, 1 << 16> buffer{};
    ssize_t count = -1;
    while (!(isCancelled && isCancelled())) {
        count = ::read(file, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        hash.addData(QByteArrayView(buffer.data(), count));
    }
    ::close(file);
    return count == 0 ? hash.result() : QByteArray();
}

Place placeOf(const LedgerRow& row, bool canReadFiles) {
    const Trace& trace = row.trace;
    const QByteArray path = trace.path();
    const QString name = QFile::decodeName(path);
    if (QFile::encodeName(name) != path) return Place::Unknown;
    const auto [presence, values] = platform::FileManager::look(name);
    if (presence == platform::Presence::Gone) return Place::Gone;
    if (presence == platform::Presence::Unknown) return Place::Unknown;
    if (trace.size < 0) return Place::HoldsIt;
    if (!values.isRegularFile) return Place::HoldsOther;
    if (trace.identity.isKnown() && trace.identity == values.identity) return Place::HoldsIt;
    if (values.fileSize != trace.size) return Place::HoldsOther;
    if (trace.digest.isEmpty()) return isSameDate(trace, values) ? Place::HoldsIt : Place::Unknown;
    if (!canReadFiles) return Place::Unknown;
    const QByteArray digest = digestOfFile(path);
    if (digest.isEmpty()) return Place::Unknown;
    return digest == trace.digest ? Place::HoldsIt : Place::HoldsOther;
}

std::optional<FileContent> contentOf(const Trace& trace, const std::function<bool()>& isCancelled) {
    const QByteArray path = trace.path();
    const auto look = [&] {
        return platform::FileManager::resourceValues(QFile::decodeName(path));
    };
    const auto before = look();
    if (!before || !before->isRegularFile || !isSameDate(trace, *before)) return std::nullopt;
    const QByteArray digest = digestOfFile(path, isCancelled);
    const auto after = look();
    if (digest.isEmpty() || !after || !isSameDate(trace, *after) ||
        after->identity != before->identity)
        return std::nullopt;
    return FileContent{before->identity, digest};
}

} // namespace marks
