#include "library/PBFolderItem.h"

#include "core/Paths.h"
#include "library/FolderIcons.h"
#include "library/OpenedRoots.h"
#include "library/PBAliasResolver.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QHash>

#include <algorithm>
#include <utility>

std::shared_ptr<PBFolderItem> PBFolderItem::folderItemWithParent(
    const std::shared_ptr<PBFolderItem>& parent, const QString& folderName) {
    // Not make_shared: the constructor is not public.
    return std::shared_ptr<PBFolderItem>(new PBFolderItem(parent, folderName, parent->_context));
}

PBFolderItem::PBFolderItem(
    std::weak_ptr<PBFolderItem> parent, QString folderName,
    std::shared_ptr<const PBFolderItemContext> context)
    : _parent(std::move(parent)), _folderName(std::move(folderName)), _context(std::move(context)) {
}

QString PBFolderItem::folderPath() const {
    const auto above = parent();
    const QString folder = above ? above->folderPath() : QString();
    if (folder.isEmpty()) return {};
    return platform::pathInFolder(folder, _folderName);
}

QString PBFolderItem::displayName() const {
    return PBUtilities::displayNameOfPath(_folderName);
}

QStringList PBFolderItem::displayIcons() const {
    return {FolderIcons::nameForPath(folderPath())};
}

QString PBFolderItem::lane() const {
    const auto above = parent();
    return above ? above->lane() : QString();
}

PBOutlineItems PBFolderItem::children() {
    if (!_isLoaded) loadChildren();
    return {_children.begin(), _children.end()};
}

std::shared_ptr<PBAliasObject>
PBFolderItem::aliasObjectAndRelativePath(QString* relativePath) const {
    const auto above = parent();
    if (!above) return nullptr;
    auto root = above->aliasObjectAndRelativePath(relativePath);
    if (relativePath) {
        *relativePath = relativePath->isEmpty()
                            ? _folderName
                            : platform::pathInFolder(*relativePath, _folderName);
    }
    return root;
}

std::shared_ptr<PBFolderItem>
PBFolderItem::childFolderWithFolderName(const QString& folderName, bool tryLoad) {
    if (!_isLoaded && tryLoad) loadChildren();
    const auto found = std::ranges::find(_children, folderName, &PBFolderItem::_folderName);
    return found == _children.end() ? nullptr : *found;
}

std::optional<Subfolders> PBFolderItem::listed(const QString& folder) {
    const auto late = [weak = weak_from_this(), folder](const Subfolders& folders) {
        const auto item = std::static_pointer_cast<PBFolderItem>(weak.lock());
        // The folder may have moved, or its volume may be gone, in the meantime.
        if (!item || !item->_isLoaded || item->folderPath() != folder) return;
        if (item->takeSubfolders(folders) && item->_context->childrenDidChange) {
            item->_context->childrenDidChange(*item);
        }
    };
    return _context->lister.list(lane(), folder, late);
}

void PBFolderItem::loadChildren() {
    platform::assertMainThread();
    _isLoaded = true;
    _children.clear();
    const QString folder = folderPath();
    if (folder.isEmpty() || OpenedRoots::isOpened(*this)) return;
    if (const auto folders = listed(folder)) takeSubfolders(*folders);
}

bool PBFolderItem::takeSubfolders(const Subfolders& folders) {
    platform::assertMainThread();
    QHash<QString, std::shared_ptr<PBFolderItem>> old;
    for (const auto& child : _children)
        old.insert(child->_folderName, child);
    bool changed = false;
    Children updated(folders.size());
    for (std::size_t i = 0; i < folders.size(); ++i)
        updated[i] = old.take(folders[i].name);
    // One that was renamed in case only is the same folder to the user, and stays open and
    // selected. The name alone does not tell: both spellings can exist side by side.
    QHash<std::uint64_t, std::shared_ptr<PBFolderItem>> missing;
    for (const auto& child : old) {
        if (child->_inode != 0) missing.insert(child->_inode, child);
    }
    const auto self = std::static_pointer_cast<PBFolderItem>(shared_from_this());
    for (std::size_t i = 0; i < folders.size(); ++i) {
        auto& child = updated[i];
        const auto& [name, inode] = folders[i];
        if (!child) {
            changed = true;
            const auto former = missing.value(inode);
            if (former && former->_folderName.compare(name, Qt::CaseInsensitive) == 0) {
                child = missing.take(inode);
                child->_folderName = name;
            } else {
                child = folderItemWithParent(self, name);
            }
        }
        child->_inode = inode;
    }
    changed = changed || updated.size() != _children.size();
    _children = std::move(updated);
    return changed;
}

bool PBFolderItem::refreshSelfChilden(const QString& path) {
    if (!_isLoaded || OpenedRoots::isOpened(*this)) return false;
    const QString folder = path.isEmpty() ? folderPath() : path;
    if (folder.isEmpty()) {
        _children.clear();
        return true;
    }
    const auto folders = listed(folder);
    return folders && takeSubfolders(*folders);
}

bool PBFolderItem::refreshChilden(const QString& path, bool refreshChildren) {
    const QString folder = folderPath();
    bool changed = false;
    bool refreshesSelf = path.isEmpty();
    if (!path.isEmpty()) {
        if (folder.isEmpty()) return false;
        const int relation = PBUtilities::comparePath(folder, path);
        if (relation == -2) return false;
        refreshesSelf = relation != 1;
    }
    if (refreshesSelf) {
        changed = refreshSelfChilden(folder);
        if (!refreshChildren) return changed;
    }
    for (const auto& child : Children(_children)) {
        if (child->refreshChilden(path, refreshChildren)) changed = true;
    }
    return changed;
}

std::shared_ptr<PBFolderAliasItem> PBFolderAliasItem::folderAliasItemWithAliasObject(
    std::shared_ptr<PBAliasObject> aliasObject,
    std::shared_ptr<const PBFolderItemContext> context) {
    return std::shared_ptr<PBFolderAliasItem>(
        new PBFolderAliasItem(std::move(aliasObject), std::move(context)));
}

PBFolderAliasItem::PBFolderAliasItem(
    std::shared_ptr<PBAliasObject> aliasObject, std::shared_ptr<const PBFolderItemContext> context)
    : PBFolderItem({}, {}, std::move(context)), _aliasObject(std::move(aliasObject)) {}

QString PBFolderAliasItem::lane() const {
    return PBAliasResolver::lane(*_aliasObject);
}

QString PBFolderAliasItem::description() const {
    if (_aliasObject->isMounted()) return folderPath();
    const bool isLocal = _aliasObject->type() == PBAliasObject::Local;
    return platform::localizedString(isLocal ? u"TryFound" : u"TryMounted");
}

QStringList PBFolderAliasItem::displayIcons() const {
    if (_aliasObject->isMounted()) return {FolderIcons::nameForPath(folderPath())};
    return {FolderIcons::nameForType(_aliasObject->type()), FolderIcons::aliasBadge()};
}

std::shared_ptr<PBAliasObject>
PBFolderAliasItem::aliasObjectAndRelativePath(QString* relativePath) const {
    if (relativePath) relativePath->clear();
    return _aliasObject;
}
