#include "platform/Places.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace platform::Places {

namespace {

QString& profileFolder() {
    static QString folder;
    return folder;
}

QString ownFolder(QStandardPaths::StandardLocation location) {
    const QString folder = profileFolder().isEmpty() ? QStandardPaths::writableLocation(location) +
                                                           QStringLiteral("/Velmora")
                                                     : profileFolder();
    QDir().mkpath(folder);
    return folder;
}

} // namespace

void setProfile(const QString& folder) {
    profileFolder() = folder.isEmpty() ? QString() : QDir(folder).absolutePath();
}

QString profile() {
    return profileFolder();
}

QString dataFolder() {
    return ownFolder(QStandardPaths::GenericDataLocation);
}

QString settingsFile() {
    return ownFolder(QStandardPaths::GenericConfigLocation) + QStringLiteral("/Velmora.conf");
}

QString sharedFile(const QString& name) {
    return QDir::cleanPath(
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/velmora/") + name);
}

} // namespace platform::Places
