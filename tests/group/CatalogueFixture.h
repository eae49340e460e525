#pragma once

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "group/FolderPaths.h"
#include "group/GroupingStep.h"
#include "group/PBGroupItem.h"

#include <gtest/gtest.h>

#include <QString>

#include <map>
#include <memory>
#include <vector>

namespace support {

/// A catalogue in memory.
class CatalogueFixture : public testing::Test {
protected:
    CatalogueFixture() {
        EXPECT_TRUE(database.open());
        EXPECT_TRUE(catalogue.checkTables_FilesDb());
    }

    /// Adds a row and answers an item for it, with a modification date of noon on 2 June 2021.
    std::shared_ptr<PBImageFileItem> addImage(PBDictionary columns = {}) {
        columns.try_emplace(QStringLiteral("FileName"), QStringLiteral("IMG_1.jpg"));
        const qint64 id = catalogue.insertImageFileWithDictionary(columns);
        EXPECT_GT(id, 0);
        return PBImageFileItem::imageFileItemWithId(
            id, 1, columns[QStringLiteral("FileName")].toText(), 1000, modified.secondsSince1970);
    }

    FMDatabase database{QString()};
    PBCatalogue catalogue{database};
    const PBDate modified{1622635200.0};
};

/// Folder paths that a test tells.
class KnownFolders final : public group::FolderPaths {
public:
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

inline std::shared_ptr<PBImageFileItem> makeItem(
    const QString& name, qint64 id = 1, quint64 size = 0, double modifiedDate = 0,
    qint64 folderId = 1) {
    return PBImageFileItem::imageFileItemWithId(id, folderId, name, size, modifiedDate);
}

inline QString text(const char16_t* content) {
    return QString::fromUtf16(content);
}

/// The tree as text: nodes by their values, images by their names.
inline QString describe(const PBGroupItem& node) {
    QStringList parts;
    for (const auto& item : node.imageFiles())
        parts.append(item->fileName());
    for (const auto& child : node.children())
        parts.append(describe(*child));
    const QString value = node.value().isAbsent() ? text(u"absent")
                          : node.value().isNull() ? text(u"null")
                                                  : node.value().toText();
    return value + u'(' + parts.join(u' ') + u')';
}

inline QString describe(const PBGroupItemArray& tree) {
    QStringList parts;
    for (const auto& node : tree)
        parts.append(describe(*node));
    return parts.join(u' ');
}

} // namespace support
