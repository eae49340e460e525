#include "platform/program/StandardFolders.h"

#include "platform/tasks/Mutex.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace platform::StandardFolders {

namespace {

/// Set by the command line at the start, and by tests at any time; asked for by any thread.
struct Profile {
    Mutex mutex;
    QString folder VELMORA_GUARDED_BY(mutex); // empty: the user's own places
};

Profile& profile() {
    static Profile chosen;
    return chosen;
}

QString profileFolder() {
    const Lock lock(profile().mutex);
    return profile().folder;
}

QString ownFolder(QStandardPaths::StandardLocation location) {
    QString folder = profileFolder();
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(location) + QStringLiteral("/Velmora");
    QDir().mkpath(folder);
    return folder;
}

} // namespace

void setProfile(const QString& folder) {
    const QString absolute = folder.isEmpty() ? QString() : QDir(folder).absolutePath();
    const Lock lock(profile().mutex);
    profile().folder = absolute;
}

QString dataFolder() {
    return ownFolder(QStandardPaths::GenericDataLocation);
}

QString cacheFolder() {
    const QString profile = profileFolder();
    if (profile.isEmpty()) return ownFolder(QStandardPaths::GenericCacheLocation);
    const QString folder = profile + QStringLiteral("/Cache");
    QDir().mkpath(folder);
    return folder;
}

QString settingsFile() {
    return ownFolder(QStandardPaths::GenericConfigLocation) + QStringLiteral("/Velmora.conf");
}

QString sharedFile(const QString& name) {
    return QDir::cleanPath(
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/velmora/") + name);
}

} // namespace platform::StandardFolders
