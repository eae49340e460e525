#include "library/RootRecognition.h"

#include "FMDB/FMDatabase.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"

#include <algorithm>
#include <utility>

std::optional<std::vector<CataloguedName>>
cataloguedNames(FMDatabase& db, qint64 aliasId, std::size_t most) {
    std::vector<std::pair<qint64, QString>> folders;
    FMResultSet rows = db.executeQuery(
        QStringLiteral("select Id,RelativePath from Folder where AliasId = ? and "
                       "exists (select 1 from ImageFile where FolderId = Folder.Id) order by Id"),
        aliasId);
    while (rows.next())
        folders.emplace_back(rows.longLongIntForColumnIndex(0), rows.stringForColumnIndex(1));
    if (rows.hadError()) return std::nullopt;

    std::vector<CataloguedName> names;
    const std::size_t count = std::min(folders.size(), most);
    for (std::size_t i = 0; i < count; ++i) {
        // Evenly over the folders, and what one lacks is taken from those behind it.
        const auto& [folderId, relativePath] = folders[i * folders.size() / count];
        const std::size_t left = (most - names.size()) / (count - i);
        FMResultSet files = db.executeQuery(
            QStringLiteral("select FileName,FileSize from ImageFile where FolderId = ? limit ?"),
            folderId, static_cast<qint64>(left));
        while (files.next()) {
            const QString name = files.stringForColumnIndex(0);
            names.push_back(
                {relativePath.isEmpty() ? name : platform::pathInFolder(relativePath, name),
                 files.longLongIntForColumnIndex(1)});
        }
        if (files.hadError()) return std::nullopt;
    }
    return names;
}

Recognition recogniseFolder(
    const QString& folder, std::span<const CataloguedName> names,
    const std::function<bool()>& isOver) {
    std::size_t known = 0;
    std::size_t there = 0;
    for (const CataloguedName& name : names) {
        if (isOver()) break;
        const auto look =
            platform::FileManager::look(platform::pathInFolder(folder, name.relativePath));
        if (look.presence == platform::Presence::Unknown) continue;
        ++known;
        const bool isSame = look.presence == platform::Presence::There &&
                            look.values.isRegularFile && look.values.fileSize == name.fileSize;
        if (isSame) ++there;
    }
    if (names.empty() || known * 2 < names.size()) return Recognition::Undecided;
    if (there * 2 >= known) return Recognition::Same;
    return there == 0 ? Recognition::Other : Recognition::Undecided;
}
