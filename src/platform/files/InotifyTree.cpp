#include "platform/files/InotifyTree.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/EventStream.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::uint32_t selfMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_MASK_ADD;
constexpr std::uint32_t ancestorMask = selfMask | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t awaitingMask = ancestorMask | IN_CREATE;
constexpr std::uint32_t treeMask =
    selfMask | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE;

/// Nothing of such an entry is told, and nothing below it is looked at.
bool isLeftOut(const QByteArray& name) {
    return name.startsWith('.');
}

bool isEntered(const QByteArray& name) {
    return !isLeftOut(name) && !FileManager::isPackageName(QFile::decodeName(name));
}

bool isAtOrBelow(const QByteArray& path, const QByteArray& folder) {
    if (folder == "/") return true;
    return path.startsWith(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool isRealFolder(int directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return ::fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

bool isThere(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0;
}

/// Names of the folders in it that are looked into.
std::vector<QByteArray> foldersIn(const QByteArray& path) {
    std::vector<QByteArray> names;
    const DirectoryHandle directory = openDirectory(path);
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        if (isEntered(name) && isRealFolder(::dirfd(directory.get()), *entry))
            names.push_back(name);
    }
    return names;
}

} // namespace

InotifyTree::InotifyTree(Sink& sink, std::stop_token stop)
    : _sink(sink), _stop(std::move(stop)), _descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

InotifyTree::~InotifyTree() {
    if (_descriptor >= 0) ::close(_descriptor);
}

void InotifyTree::addRoots(
    const std::vector<QByteArray>& roots, const std::vector<QByteArray>& awaited,
    const std::vector<QByteArray>& flat) {
    _flat = flat;
    _roots = roots;
    _roots.insert(_roots.end(), awaited.begin(), awaited.end());
    _awaited = awaited;
    for (const QByteArray& root : roots) {
        addRoot(root);
        watchAncestors(root, ancestorMask);
        // What left just before it was watched is told by nobody else.
        if (!isThere(root)) _sink.rootChanged(root, {});
    }
    for (const QByteArray& root : awaited)
        lookForAwaited(root);
}

void InotifyTree::addRoot(const QByteArray& root) {
    const bool isCovered = std::ranges::any_of(_roots, [&](const QByteArray& other) {
        return other != root && !isFlat(other) && isAtOrBelow(root, other);
    });
    if (!isCovered) addFolder(nullptr, root, root, false);
}

bool InotifyTree::isFlat(const QByteArray& root) const {
    return std::ranges::find(_flat, root) != _flat.end();
}

void InotifyTree::watchAncestors(const QByteArray& root, std::uint32_t mask) {
    for (QByteArray above = root; above.size() > 1;) {
        above.truncate(std::max<qsizetype>(above.lastIndexOf('/'), 1));
        const int watch = ::inotify_add_watch(_descriptor, above.constData(), mask);
        if (watch < 0) continue;
        Ancestor& ancestor = _ancestors[watch];
        ancestor.path = above;
        if (std::ranges::find(ancestor.roots, root) == ancestor.roots.end())
            ancestor.roots.push_back(root);
    }
}

/// Something may have come to the path, which is that of awaited roots or of a folder above them.
void InotifyTree::lookForAwaited(const QByteArray& path) {
    for (const QByteArray& root : _awaited) {
        if (!isAtOrBelow(root, path)) continue;
        // The watches first: what comes from now on is told.
        watchAncestors(root, awaitingMask);
        if (!isThere(root)) continue;
        addRoot(root);
        _sink.rootChanged(root, {});
    }
}

void InotifyTree::noteMovesOfRoots(const inotify_event& event, Clock::time_point now) {
    const bool isComing = (event.mask & (IN_MOVED_TO | IN_CREATE)) != 0;
    const auto ancestor = _ancestors.find(event.wd);
    const Node* node = nodeOf(event.wd);
    const bool isAbove = ancestor != _ancestors.end();
    if (event.len == 0 || (!isAbove && (!node || !isComing || _departures.empty()))) return;
    const QByteArrayView name(static_cast<const char*>(event.name));
    const QByteArray path = pathInFolder(node ? pathOf(*node) : ancestor->second.path, name);
    if ((event.mask & IN_MOVED_FROM) != 0) {
        const bool concerns = std::ranges::any_of(
            _roots, [&](const QByteArray& root) { return isAtOrBelow(root, path); });
        if (concerns) _departures.push_back({event.cookie, path, now + renameTime});
    }
    const auto half = std::ranges::find(_departures, event.cookie, &Departure::cookie);
    if ((event.mask & IN_MOVED_TO) != 0 && half != _departures.end()) {
        const QByteArray from = std::move(half->path);
        _departures.erase(half);
        for (const QByteArray& root : _roots) {
            if (isAtOrBelow(root, from)) _sink.rootChanged(root, path + root.mid(from.size()));
        }
    }
    if (isComing) lookForAwaited(path);
}

InotifyTree::AddedNode InotifyTree::addNode(
    Node* parent, const QByteArray& name, const QByteArray& path, const QByteArray& root) {
    const std::uint32_t mask = parent ? treeMask | IN_DONT_FOLLOW : treeMask;
    const int watch = ::inotify_add_watch(_descriptor, path.constData(), mask);
    if (watch < 0) {
        const bool isNew = std::ranges::find(_rootsAtLimit, root) == _rootsAtLimit.end();
        if (errno == ENOSPC && isNew) {
            _rootsAtLimit.push_back(root);
            _sink.limitReached(root);
        }
        return {};
    }
    std::unique_ptr<Node>& node = _nodes[watch];
    if (node) {
        if (node->parent == parent && node->name == name) return {node.get(), false};
        // Two paths lead to it, or the one that it was found by has been another folder's since.
        const QByteArray known = pathOf(*node);
        const bool isStillThere =
            ::inotify_add_watch(_descriptor, known.constData(), mask) == watch;
        if (isStillThere || isAtOrAbove(*node, parent)) return {};
        removeNode(*node);
        return addNode(parent, name, path, root);
    }
    node = std::make_unique<Node>();
    node->watch = watch;
    node->parent = parent;
    node->name = name;
    node->root = root;
    if (parent) parent->children[name] = node.get();
    return {node.get(), true};
}

void InotifyTree::addFolder(
    Node* parent, const QByteArray& name, const QByteArray& root, bool announce) {
    struct Found {
        int parentWatch; // a node may go while others are added
        QByteArray name;
        QByteArray path;
    };
    constexpr int none = -1;
    std::vector<Found> found{
        {parent ? parent->watch : none, name, parent ? pathIn(*parent, name) : name}};
    while (!found.empty() && !_stop.stop_requested()) {
        const Found folder = std::move(found.back());
        found.pop_back();
        Node* above = folder.parentWatch == none ? nullptr : nodeOf(folder.parentWatch);
        if (!above && folder.parentWatch != none) continue;
        const auto [node, isNew] = addNode(above, folder.name, folder.path, root);
        // One that is made may be known: by the event of a former folder of its path, whose end has
        // then taken along what was found in this one.
        if (!node || (!isNew && !announce) || isFlat(root)) continue;
        const DirectoryHandle directory = openDirectory(folder.path);
        if (!directory) continue;
        while (const dirent* entry = ::readdir(directory.get())) {
            const QByteArray entryName(entry->d_name);
            if (isLeftOut(entryName)) continue;
            const bool isFolder = isRealFolder(::dirfd(directory.get()), *entry);
            const QByteArray path = pathInFolder(folder.path, entryName);
            if (isFolder && announce) _sink.folderEvent(path, EventItemCreated | EventItemIsDir);
            if (isFolder && isEntered(entryName)) found.push_back({node->watch, entryName, path});
            if (!isFolder && announce) _sink.fileCreated(path);
        }
    }
}

/// A path from before a move leads nowhere, or to another folder: what was made in the folder just
/// before it moved may not be watched, or a stranger may be in its place.
void InotifyTree::watchMissed(Node& moved) {
    std::vector<int> left{moved.watch};
    while (!left.empty() && !_stop.stop_requested()) {
        Node* folder = nodeOf(left.back());
        left.pop_back();
        if (!folder) continue;
        const QByteArray path = pathOf(*folder);
        for (const QByteArray& name : foldersIn(path)) {
            const QByteArray below = pathInFolder(path, name);
            const int watch =
                ::inotify_add_watch(_descriptor, below.constData(), treeMask | IN_DONT_FOLLOW);
            const auto known = folder->children.find(name);
            if (known != folder->children.end() && (watch < 0 || known->second->watch == watch)) {
                left.push_back(known->second->watch);
                continue;
            }
            if (known != folder->children.end()) removeNode(*known->second);
            if (Node* stranger = nodeOf(watch)) removeNode(*stranger);
            addFolder(folder, name, folder->root, true);
        }
    }
}

void InotifyTree::readEvents(Clock::time_point now) {
    alignas(inotify_event) std::array<char, 64 * 1024> buffer;
    while (true) {
        const ssize_t length = ::read(_descriptor, buffer.data(), buffer.size());
        if (length <= 0) return;
        for (ssize_t position = 0; position < length;) {
            const auto* event =
                reinterpret_cast<const inotify_event*>(&buffer[static_cast<std::size_t>(position)]);
            position += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                _sink.overflowed();
                return;
            }
            handle(*event, now);
        }
    }
}

void InotifyTree::handle(const inotify_event& event, Clock::time_point now) {
    if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED)) != 0) {
        handleSelf(event.wd, event.mask);
        return;
    }
    noteMovesOfRoots(event, now);
    Node* parent = nodeOf(event.wd);
    if (!parent || event.len == 0) return;
    const QByteArray name(static_cast<const char*>(event.name));
    if ((event.mask & IN_MOVED_FROM) != 0) {
        if (!isLeftOut(name)) renamedFrom(*parent, name, event, now);
    } else if ((event.mask & IN_MOVED_TO) != 0) {
        renamedTo(*parent, name, event);
    } else if (!isLeftOut(name)) {
        if ((event.mask & IN_ISDIR) != 0) {
            handleFolder(*parent, name, event);
        } else {
            handleFile(*parent, name, event);
        }
    }
}

void InotifyTree::handleSelf(int watch, std::uint32_t mask) {
    Node* node = nodeOf(watch);
    if ((mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) != 0) {
        if (const auto above = _ancestors.find(watch); above != _ancestors.end()) {
            for (const QByteArray& root : above->second.roots)
                _sink.rootChanged(root, {});
        }
        if (node && !node->parent && std::ranges::find(_roots, node->name) != _roots.end())
            _sink.rootChanged(node->name, {});
        return;
    }
    _ancestors.erase(watch);
    if (!node) return;
    detach(*node);
    for (const auto& [name, child] : node->children) {
        child->name = pathIn(*node, name);
        child->parent = nullptr;
    }
    forgetInRenames(*node);
    _nodes.erase(watch);
}

void InotifyTree::handleFolder(Node& parent, const QByteArray& name, const inotify_event& event) {
    const QByteArray path = pathIn(parent, name);
    if ((event.mask & IN_CREATE) != 0) {
        _sink.folderEvent(path, EventItemCreated | EventItemIsDir);
        if (isEntered(name) && !isFlat(parent.root)) addFolder(&parent, name, parent.root, true);
    } else if ((event.mask & IN_DELETE) != 0) {
        _sink.folderEvent(path, EventItemRemoved | EventItemIsDir);
        _sink.folderMoved(path, {});
        tellRootsBelow(path);
    }
}

void InotifyTree::handleFile(
    const Node& parent, const QByteArray& name, const inotify_event& event) {
    const QByteArray path = pathIn(parent, name);
    if ((event.mask & IN_CREATE) != 0) _sink.fileCreated(path);
    if ((event.mask & IN_CLOSE_WRITE) != 0) _sink.fileClosed(path);
    if ((event.mask & IN_DELETE) != 0) _sink.fileRemoved(path);
}

void InotifyTree::renamedFrom(
    Node& parent, const QByteArray& name, const inotify_event& event, Clock::time_point now) {
    Rename rename{
        event.cookie, (event.mask & IN_ISDIR) != 0, pathIn(parent, name), nullptr,
        now + renameTime};
    if (const auto child = parent.children.find(name);
        rename.isFolder && child != parent.children.end()) {
        rename.node = child->second;
        detach(*rename.node);
        // Until it is known where it went, what happens in it happens at its old place.
        rename.node->name = rename.path;
    }
    _renames.push_back(std::move(rename));
}

void InotifyTree::renamedTo(Node& parent, const QByteArray& name, const inotify_event& event) {
    const auto half = std::ranges::find(_renames, event.cookie, &Rename::cookie);
    std::optional<Rename> from;
    if (half != _renames.end()) {
        from = std::move(*half);
        _renames.erase(half);
    }
    if (isLeftOut(name)) {
        if (from) movedAway(*from);
        return;
    }
    const QByteArray path = pathIn(parent, name);
    if ((event.mask & IN_ISDIR) == 0) {
        _sink.fileRenamed(from ? from->path : QByteArray(), path);
        return;
    }
    if (from) {
        _sink.folderEvent(from->path, EventItemRenamed | EventItemIsDir);
        _sink.folderMoved(from->path, path);
        tellRootsBelow(from->path);
    }
    _sink.folderEvent(path, EventItemRenamed | EventItemIsDir);
    if (const auto replaced = parent.children.find(name); replaced != parent.children.end())
        removeNode(*replaced->second);
    if (from && from->node && isEntered(name)) {
        from->node->parent = &parent;
        from->node->name = name;
        parent.children[name] = from->node;
        const int watch =
            ::inotify_add_watch(_descriptor, path.constData(), treeMask | IN_DONT_FOLLOW);
        const bool isAnother = watch >= 0 && watch != from->node->watch;
        if (isAnother && !isAtOrAbove(*from->node, &parent)) {
            // The path was that of a later folder when it was added.
            removeNode(*from->node);
            addFolder(&parent, name, parent.root, true);
        } else {
            watchMissed(*from->node);
        }
    } else {
        if (from && from->node) removeNode(*from->node);
        if (isEntered(name) && !isFlat(parent.root)) addFolder(&parent, name, parent.root, false);
    }
}

void InotifyTree::movedAway(const Rename& rename) {
    if (!rename.isFolder) {
        _sink.fileRenamed(rename.path, {});
        return;
    }
    _sink.folderEvent(rename.path, EventItemRenamed | EventItemIsDir);
    _sink.folderMoved(rename.path, {});
    tellRootsBelow(rename.path);
    if (rename.node) removeNode(*rename.node);
}

void InotifyTree::expireRenames(Clock::time_point now) {
    std::erase_if(_departures, [&](const Departure& half) { return half.deadline <= now; });
    const auto firstExpired =
        std::stable_partition(_renames.begin(), _renames.end(), [&](const Rename& rename) {
            return rename.deadline > now;
        });
    const std::vector<Rename> expired(firstExpired, _renames.end());
    _renames.erase(firstExpired, _renames.end());
    for (const Rename& rename : expired)
        movedAway(rename);
}

std::optional<InotifyTree::Clock::time_point> InotifyTree::nextExpiry() const {
    if (_renames.empty()) return std::nullopt;
    return std::ranges::min(_renames, {}, &Rename::deadline).deadline;
}

void InotifyTree::tellRootsBelow(const QByteArray& path) {
    for (const QByteArray& root : _roots) {
        if (isAtOrBelow(root, path)) _sink.rootChanged(root, {});
    }
}

void InotifyTree::detach(Node& node) {
    if (!node.parent) return;
    const auto entry = node.parent->children.find(node.name);
    if (entry != node.parent->children.end() && entry->second == &node)
        node.parent->children.erase(entry);
    node.parent = nullptr;
}

void InotifyTree::removeNode(Node& node) {
    detach(node);
    std::vector<Node*> left{&node};
    while (!left.empty()) {
        Node* next = left.back();
        left.pop_back();
        for (const auto& [name, child] : next->children)
            left.push_back(child);
        ::inotify_rm_watch(_descriptor, next->watch);
        forgetInRenames(*next);
        _nodes.erase(next->watch);
    }
}

void InotifyTree::forgetInRenames(const Node& node) {
    for (Rename& rename : _renames) {
        if (rename.node == &node) rename.node = nullptr;
    }
}

bool InotifyTree::isAtOrAbove(const Node& node, const Node* other) {
    while (other && other != &node)
        other = other->parent;
    return other != nullptr;
}

InotifyTree::Node* InotifyTree::nodeOf(int watch) const {
    const auto found = _nodes.find(watch);
    return found == _nodes.end() ? nullptr : found->second.get();
}

QByteArray InotifyTree::pathOf(const Node& node) {
    std::vector<const Node*> line;
    for (const Node* next = &node; next; next = next->parent)
        line.push_back(next);
    QByteArray path = line.back()->name;
    for (auto next = line.rbegin() + 1; next != line.rend(); ++next)
        path = pathInFolder(path, (*next)->name);
    return path;
}

QByteArray InotifyTree::pathIn(const Node& folder, const QByteArray& name) {
    return pathInFolder(pathOf(folder), name);
}

} // namespace platform
