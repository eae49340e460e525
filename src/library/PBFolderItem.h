#pragma once

#include "library/PBAliasObject.h"
#include "library/PBFolderLister.h"
#include "library/PBOutlineItem.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class PBFolderItem;

/// What the folder items of one tree share.
struct PBFolderItemContext {
    PBFolderLister& lister; // outlives the items
    /// The children of an item changed without anyone asking: a slow disk has answered.
    std::function<void(PBFolderItem& item)> childrenDidChange;
};

/// A folder on disk below a folder root. Its subfolders are loaded on demand.
class PBFolderItem : public PBOutlineItem {
public:
    using Children = std::vector<std::shared_ptr<PBFolderItem>>;

    [[nodiscard]] static std::shared_ptr<PBFolderItem>
    folderItemWithParent(const std::shared_ptr<PBFolderItem>& parent, const QString& folderName);

    /// nullptr for the item of a root.
    [[nodiscard]] std::shared_ptr<PBFolderItem> parent() const { return _parent.lock(); }
    [[nodiscard]] const QString& folderName() const { return _folderName; }
    /// Empty below an unmounted root.
    [[nodiscard]] virtual QString folderPath() const;

    [[nodiscard]] QString displayName() const override;
    [[nodiscard]] QString tip() const override { return folderPath(); }
    [[nodiscard]] QStringList displayIcons() const override;
    [[nodiscard]] PBOutlineItems children() override;
    /// Without loading anything.
    [[nodiscard]] const Children& loadedChildren() const { return _children; }
    [[nodiscard]] bool isLoaded() const { return _isLoaded; }

    /// The root, with the way from it to this folder in `relativePath`; the empty text for the root
    /// itself.
    [[nodiscard]] virtual std::shared_ptr<PBAliasObject>
    aliasObjectAndRelativePath(QString* relativePath) const;

    /// The child of that name; nullptr if there is none, or if children are not loaded and
    /// `tryLoad` is false.
    [[nodiscard]] std::shared_ptr<PBFolderItem>
    childFolderWithFolderName(const QString& folderName, bool tryLoad);

    /// Lists the folder (that at the path, or this item's own) again, if it was ever loaded;
    /// answers whether the children changed. Items of folders that are still there stay, with their
    /// own children.
    bool refreshSelfChilden(const QString& path = {});
    /// Refreshes this item if it is at or below the path (with an empty path: in any case) and,
    /// with `refreshChildren`, what is loaded below it. Answers whether anything changed.
    bool refreshChilden(const QString& path, bool refreshChildren);

protected:
    PBFolderItem(
        std::weak_ptr<PBFolderItem> parent, QString folderName,
        std::shared_ptr<const PBFolderItemContext> context);

    /// Names the volume for the lister.
    [[nodiscard]] virtual QString lane() const;

private:
    void loadChildren();
    [[nodiscard]] std::optional<Subfolders> listed(const QString& folder);
    bool takeSubfolders(const Subfolders& folders);

    const std::weak_ptr<PBFolderItem> _parent;
    QString _folderName;
    std::uint64_t _inode = 0; // as `Subfolder` has it
    const std::shared_ptr<const PBFolderItemContext> _context;
    Children _children;
    bool _isLoaded = false;
};

/// The item of a folder root.
class PBFolderAliasItem final : public PBFolderItem {
public:
    [[nodiscard]] static std::shared_ptr<PBFolderAliasItem> folderAliasItemWithAliasObject(
        std::shared_ptr<PBAliasObject> aliasObject,
        std::shared_ptr<const PBFolderItemContext> context);

    [[nodiscard]] const std::shared_ptr<PBAliasObject>& aliasObject() const { return _aliasObject; }

    [[nodiscard]] QString folderPath() const override { return _aliasObject->path(); }
    [[nodiscard]] QString displayName() const override { return _aliasObject->displayName(); }
    [[nodiscard]] QString description() const override;
    [[nodiscard]] QStringList displayIcons() const override;
    [[nodiscard]] std::shared_ptr<PBAliasObject>
    aliasObjectAndRelativePath(QString* relativePath) const override;

protected:
    [[nodiscard]] QString lane() const override;

private:
    PBFolderAliasItem(
        std::shared_ptr<PBAliasObject> aliasObject,
        std::shared_ptr<const PBFolderItemContext> context);

    const std::shared_ptr<PBAliasObject> _aliasObject;
};
