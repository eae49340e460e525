#pragma once

#include "catalogue/PBCatalogue.h"
#include "group/FolderPaths.h"
#include "group/GroupingStep.h"
#include "group/ItemOrder.h"
#include "group/PBGroupItem.h"
#include "support/Rows.h"

namespace support {

/// A catalogue in memory.
struct CatalogueFixture : testing::Test {
    CatalogueFixture() {
        EXPECT_TRUE(database.open());
        EXPECT_TRUE(catalogue.checkTables_FilesDb());
    }

    /// Adds a row and answers an item for it, with a modification date of noon on 2 June 2021.
    std::shared_ptr<PBImageFileItem> addImage(PBDictionary columns = {}) {
        columns.try_emplace(u"FileName"_s, u"IMG_1.jpg"_s);
        const qint64 id = catalogue.insertImageFileWithDictionary(columns);
        EXPECT_GT(id, 0);
        return PBImageFileItem::imageFileItemWithId(
            id, 1, columns[u"FileName"_s].toText(), 1000, modified.secondsSince1970);
    }

    FMDatabase database{QString()};
    PBCatalogue catalogue{database};
    const PBDate modified{1622635200.0};
};

/// Folder paths that a test tells.
struct KnownFolders final : group::FolderPaths {
    explicit KnownFolders(std::map<qint64, QString> paths) : _paths(std::move(paths)) {}
    [[nodiscard]] QString pathOfFolderId(qint64 folderId) const override {
        ++asked;
        const auto found = _paths.find(folderId);
        return found == _paths.end() ? QString() : found->second;
    }
    mutable int asked = 0;

private:
    std::map<qint64, QString> _paths;
};

struct NoRoots final : FolderRootPaths {
    QString mountedPathOfAliasId(qint64) const override { return {}; }
};

inline std::shared_ptr<PBImageFileItem> makeItem(
    const QString& name, qint64 id = 1, quint64 size = 0, double modifiedDate = 0,
    qint64 folderId = 1) {
    return PBImageFileItem::imageFileItemWithId(id, folderId, name, size, modifiedDate);
}

/// Puts the item into a tree of camera models with star ratings below, as a scan does it.
inline void insertByModelAndStars(
    PBGroupItemArray& tree, const PBValue& model, int stars,
    const std::shared_ptr<PBImageFileItem>& item) {
    using namespace group;
    const std::array<int, 2> chain{CameraModel, StarRating};
    pushImageFileItemToWorkGroupItemArray({item, tree, chain, PBArray{model, stars}, SortFileName});
}

/// The tree as text: nodes by their values, images by their names.
inline QString describe(const PBGroupItem& node) {
    QStringList parts =
        support::listed(node.imageFiles(), [](const auto& item) { return item->fileName(); });
    for (const auto& child : node.children())
        parts.append(describe(*child));
    const QString value = node.value().isAbsent() ? u"absent"_s
                          : node.value().isNull() ? u"null"_s
                                                  : node.value().toText();
    return value + u'(' + parts.join(u' ') + u')';
}

inline QString describe(const PBGroupItemArray& tree) {
    return support::listed(tree, [](const auto& node) { return describe(*node); }).join(u' ');
}

} // namespace support
