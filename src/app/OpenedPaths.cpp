#include "app/OpenedPaths.h"

#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "platform/files/Spelling.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// What is wrong with the path, or nothing.
std::optional<QString> faultOf(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (::stat(name.constData(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return QStringLiteral("there is no file or folder %1").arg(path);
        }
        return QStringLiteral("%1 can't be opened (%2)")
            .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (!isFolder && !S_ISREG(status.st_mode)) {
        return QStringLiteral("%1 is neither a file nor a folder").arg(path);
    }
    if (::access(name.constData(), isFolder ? R_OK | X_OK : R_OK) != 0) {
        return QStringLiteral("the %1 %2 can't be read (%3)")
            .arg(
                isFolder ? QStringLiteral("folder") : QStringLiteral("file"), path,
                QString::fromLocal8Bit(std::strerror(errno)));
    }
    if (isFolder) return std::nullopt;
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
    if (PBImageImporterManager().imageImporterClassForImageUTI(type)) return std::nullopt;
    return QStringLiteral("%1 is no photograph of a kind that can be shown").arg(path);
}

} // namespace

QStringList openablePaths(
    const QStringList& paths, const std::function<void(const QString& sentence)>& complain) {
    QStringList openable;
    for (const QString& path : paths) {
        if (const auto fault = faultOf(path)) {
            complain(*fault);
        } else {
            openable.append(platform::spelledAsOnDisk(path));
        }
    }
    return openable;
}
