#include "library/PBFolderItem.h"

#include "core/Paths.h"
#include "library/FolderIcons.h"
#include "library/PBAliasResolver.h"
#include "library/PBFolderLister.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainThread.h"

#include <QHash>

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
    std::shared_ptr<PBFolderItem> respelled;
    for (const auto& child : _children) {
        if (child->_folderName == folderName) return child;
        const bool isSame = child->_folderName.compare(folderName, Qt::CaseInsensitive) == 0;
        if (isSame && !respelled) respelled = child;
    }
    return respelled;
}

std::optional<QStringList> PBFolderItem::listedNames(const QString& folder) {
    const auto late = [weak = weak_from_this(), folder](const QStringList& names) {
        const auto item = std::static_pointer_cast<PBFolderItem>(weak.lock());
        // The folder may have moved, or its volume may be gone, in the meantime.
        if (!item || !item->_isLoaded || item->folderPath() != folder) return;
        if (item->takeNames(names) && item->_context->childrenDidChange) {
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
    if (folder.isEmpty()) return;
    if (const auto names = listedNames(folder)) takeNames(*names);
}

bool PBFolderItem::takeNames(const QStringList& names) {
    platform::assertMainThread();
    QHash<QString, std::shared_ptr<PBFolderItem>> old;
    for (const auto& child : _children)
        old.insert(child->_folderName, child);
    bool changed = false;
    Children updated(static_cast<std::size_t>(names.size()));
    for (qsizetype i = 0; i < names.size(); ++i)
        updated[static_cast<std::size_t>(i)] = old.take(names[i]);
    // What is left may have changed its case only. Both spellings can exist side by side, so the
    // exact ones are served first.
    QHash<QString, std::shared_ptr<PBFolderItem>> respelled;
    for (const auto& child : old)
        respelled.insert(child->_folderName.toCaseFolded(), child);
    const auto self = std::static_pointer_cast<PBFolderItem>(shared_from_this());
    for (qsizetype i = 0; i < names.size(); ++i) {
        auto& child = updated[static_cast<std::size_t>(i)];
        if (child) continue;
        child = respelled.take(names[i].toCaseFolded());
        if (child) {
            child->_folderName = names[i];
        } else {
            child = folderItemWithParent(self, names[i]);
        }
        changed = true;
    }
    changed = changed || updated.size() != _children.size();
    _children = std::move(updated);
    return changed;
}

bool PBFolderItem::refreshSelfChilden(const QString& path) {
    if (!_isLoaded) return false;
    const QString folder = path.isEmpty() ? folderPath() : path;
    if (folder.isEmpty()) {
        _children.clear();
        return true;
    }
    const auto names = listedNames(folder);
    return names && takeNames(*names);
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
