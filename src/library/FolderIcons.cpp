#include "library/FolderIcons.h"

#include "library/PBAliasObject.h"

#include <QHash>
#include <QStandardPaths>

namespace FolderIcons {

namespace {

QHash<QString, QString> namesByPath() {
    using Location = QStandardPaths::StandardLocation;
    static constexpr std::pair<Location, const char16_t*> places[] = {
        {QStandardPaths::PicturesLocation, u"folder-pictures"},
        {QStandardPaths::DownloadLocation, u"folder-download"},
        {QStandardPaths::DocumentsLocation, u"folder-documents"},
        {QStandardPaths::MoviesLocation, u"folder-videos"},
        {QStandardPaths::MusicLocation, u"folder-music"},
        {QStandardPaths::DesktopLocation, u"user-desktop"},
        // Last: where a folder of the user's is not set up, it is the home folder itself.
        {QStandardPaths::HomeLocation, u"user-home"}};
    QHash<QString, QString> names;
    for (const auto& [location, name] : places) {
        names.insert(QStandardPaths::writableLocation(location), QString::fromUtf16(name));
    }
    names.insert(QStringLiteral("/"), QStringLiteral("drive-harddisk"));
    return names;
}

} // namespace

QString nameForPath(const QString& path) {
    static const QHash<QString, QString> names = namesByPath();
    return names.value(path, QStringLiteral("folder"));
}

QString nameForType(std::uint64_t aliasType) {
    switch (aliasType) {
    case PBAliasObject::Network:
        return QStringLiteral("network-server");
    case PBAliasObject::Removable:
        return QStringLiteral("drive-removable-media");
    default:
        return QStringLiteral("folder");
    }
}

QString aliasBadge() {
    return QStringLiteral("emblem-symbolic-link");
}

} // namespace FolderIcons
