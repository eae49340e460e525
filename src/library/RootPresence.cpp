#include "library/RootPresence.h"

#include "library/PBAliasObject.h"
#include "platform/files/FileManager.h"
#include "platform/volumes/Bookmark.h"

bool isRootThere(const PBAliasObject& aliasObject) {
    const QString path = aliasObject.path();
    if (path.isEmpty()) return false;
    const auto bookmark = platform::Bookmark::fromData(aliasObject.aliasData());
    if (!bookmark) {
        // Damaged bytes: the path is all that is known.
        const auto look = platform::FileManager::look(path);
        return look.presence == platform::Presence::There && look.values.isDirectory;
    }
    const auto found = platform::Bookmark::bookmarkOfFolder(path, platform::Volumes());
    return found && bookmark->isSameFolder(*found, true);
}
