#include "scan/RowSpelling.h"

#include "scan/ScanServices.h"

using platform::Presence;

RowSpelling::RowSpelling(const ScanServices& services)
    : _roots(services.aliasManager), _spelling(*services.namesOnDisk) {}

Presence RowSpelling::presenceOfFolder(const QString& path, Presence looked) {
    if (looked != Presence::There) return looked;
    QString below;
    const auto root = _roots.appropriateAliasObjectForPath(path, &below, false);
    return !root || _spelling.isPathSpelledSo(root->path(), below) ? looked : Presence::Gone;
}

Presence
RowSpelling::presenceOfFile(const QString& folderPath, const QString& name, Presence looked) {
    if (looked != Presence::There) return looked;
    return _spelling.isSpelledSo(folderPath, name) ? looked : Presence::Gone;
}
