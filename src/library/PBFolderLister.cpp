#include "library/PBFolderLister.h"

#include "platform/files/FileManager.h"
#include "platform/tasks/BoundedCalls.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <utility>
#include <vector>

Subfolders subfoldersOf(const QString& folder) {
    // The collator of the C locale doesn't know numbers.
    const bool isPlain = QLocale().language() == QLocale::C;
    QCollator collator(isPlain ? QLocale(QLocale::English) : QLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<std::pair<QCollatorSortKey, Subfolder>> found;
    // A folder that can't be read is one without subfolders.
    static_cast<
        void>(platform::FileManager::enumerate(folder, [&](const platform::DirectoryEntry& entry) {
        // Links to folders are neither scanned nor watched: their folders have a place of their
        // own.
        if (entry.isDirectory && !entry.isPackage && !entry.isLink) {
            found.emplace_back(collator.sortKey(entry.name), Subfolder{entry.name, entry.inode});
        }
        return true;
    }));
    std::ranges::sort(found, [](const auto& one, const auto& other) {
        const int order = one.first.compare(other.first);
        return order != 0 ? order < 0 : one.second.name < other.second.name;
    });
    Subfolders folders;
    folders.reserve(found.size());
    for (auto& [key, subfolder] : found)
        folders.push_back(std::move(subfolder));
    return folders;
}

std::optional<Subfolders>
PBBoundedFolderLister::list(const QString& lane, const QString& folder, LateAnswer late) {
    return _calls.call<Subfolders>(
        lane, QStringLiteral("list ") + folder, waits() ? _limit : std::chrono::milliseconds(0),
        [folder] { return subfoldersOf(folder); }, std::move(late));
}
