#pragma once

#include "catalogue/PBCatalogue.h"

#include <QString>

namespace group {

/// Absolute paths of catalogued folders. Called on the thread of the connection that stands behind
/// it.
class FolderPaths {
public:
    virtual ~FolderPaths() = default;
    /// Empty for an unknown folder, and for one whose root is not mounted.
    [[nodiscard]] virtual QString pathOfFolderId(qint64 folderId) const = 0;
};

/// The paths that a connection and the folder roots give; both outlive it.
class CatalogueFolderPaths final : public FolderPaths {
public:
    CatalogueFolderPaths(FMDatabase& database, const FolderRootPaths& roots)
        : _database(database), _roots(roots) {}
    [[nodiscard]] QString pathOfFolderId(qint64 folderId) const override {
        return PBCatalogue(_database).pathOfFolderId(folderId, _roots);
    }

private:
    FMDatabase& _database;
    const FolderRootPaths& _roots;
};

} // namespace group
