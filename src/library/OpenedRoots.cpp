#include "library/OpenedRoots.h"

#include "core/Paths.h"
#include "library/PBFolderItem.h"
#include "platform/files/FileManager.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>

PBAliasArray OpenedRoots::of(const PBAliasManager& manager) {
    PBAliasArray opened;
    for (const auto& root : manager.aliasArray())
        if (isOpened(*root)) opened.push_back(root);
    return opened;
}

QStringList OpenedRoots::paths(const PBAliasManager& manager) {
    QStringList paths;
    for (const auto& root : of(manager)) {
        if (root->isMounted()) paths.append(root->path());
    }
    return paths;
}

bool OpenedRoots::isShownIn(const QString& rootPath, const QString& folder) {
    if (PBUtilities::comparePath(rootPath, folder) < 0) return false;
    const QStringList names = PBUtilities::pathComponents(folder);
    // By their names alone: nobody waits for a disk here.
    return std::ranges::none_of(
        names.sliced(PBUtilities::pathComponents(rootPath).size()), [](const QString& name) {
            return name.startsWith(u'.') || platform::FileManager::isPackageName(name);
        });
}

bool OpenedRoots::isOpened(const PBFolderItem& item) {
    platform::assertMainThread();
    const auto root = item.aliasObjectAndRelativePath(nullptr);
    return root && isOpened(*root);
}

bool OpenedRoots::takeInto(const PBAliasObject& root, PBAliasManager& manager) {
    platform::assertMainThread();
    bool isAnyTaken = false;
    for (const auto& opened : of(manager)) {
        const bool isInside = PBUtilities::comparePath(root.path(), opened->path()) == 1;
        if (isInside && manager.updateState(*opened, PBAliasObject::zombieState)) isAnyTaken = true;
    }
    return isAnyTaken;
}
