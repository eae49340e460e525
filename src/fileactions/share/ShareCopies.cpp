#include "fileactions/share/ShareCopies.h"

#include "fileactions/export/ExportPlan.h"
#include "platform/files/PathNames.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QUuid>

#include <cmath>

namespace fileactions::ShareCopies {

namespace {

constexpr std::int64_t day = 24LL * 60 * 60 * 1000;

bool makePrivate(const QString& folder) {
    return QDir().mkpath(folder) &&
           QFile::setPermissions(
               folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

bool isOfSharing(const QString& name) {
    return !QUuid::fromString(name).isNull();
}

} // namespace

bool needsCopy(double rotateAngle, std::int64_t orientation) {
    return std::fmod(rotateAngle, 360.0) != 0 || (orientation != 0 && orientation != 1);
}

QByteArray makeFolder(const QString& base) {
    const QString folder =
        platform::pathInFolder(base, QUuid::createUuid().toString(QUuid::WithoutBraces));
    if (!makePrivate(base) || !makePrivate(folder)) return {};
    return QFile::encodeName(folder);
}

std::vector<Place> placesOfCopies(const std::vector<QByteArray>& paths, const QByteArray& folder) {
    std::vector<Place> places;
    QSet<QByteArray> taken;
    for (const QByteArray& path : paths) {
        const QByteArray name = exportName(path, QStringLiteral("public.jpeg"));
        QByteArray in = folder;
        for (int n = 1; taken.contains(platform::pathInFolder(in, name)); ++n)
            in = platform::pathInFolder(folder, QByteArray::number(n));
        taken.insert(platform::pathInFolder(in, name));
        places.push_back({in, name});
    }
    return places;
}

void removeOld(const QString& base, std::int64_t now) {
    const auto folders = QDir(base).entryInfoList(
        QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QFileInfo& folder : folders) {
        const std::int64_t age = now - folder.lastModified().toMSecsSinceEpoch();
        if (age > day && isOfSharing(folder.fileName()))
            QDir(folder.filePath()).removeRecursively();
    }
}

void removeFolder(const QByteArray& folder) {
    const QString path = QFile::decodeName(folder);
    if (isOfSharing(QFileInfo(path).fileName())) QDir(path).removeRecursively();
}

} // namespace fileactions::ShareCopies
