#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <vector>

struct inotify_event;

namespace platform {

/// Watches of the kernel on folders and all folders below them, kept in step with renames, and what
/// the kernel's events mean as paths. A folder is watched before it is listed, so that nothing
/// slips through; something may be told twice. Belongs to one thread. Paths are those of the file
/// system.
class InotifyTree {
public:
    using Clock = std::chrono::steady_clock;

    class Sink {
    public:
        virtual ~Sink() = default;
        /// Created, removed, or renamed (`flags` of platform/files/EventStream.h).
        virtual void folderEvent(const QByteArray& path, std::uint32_t flags) = 0;
        /// The folder and all below it have another place; empty if that is not watched.
        virtual void folderMoved(const QByteArray& from, const QByteArray& to) = 0;
        virtual void fileCreated(const QByteArray& path) = 0;
        virtual void fileClosed(const QByteArray& path) = 0;
        virtual void fileRemoved(const QByteArray& path) = 0;
        /// One of the two is empty when that place is not watched.
        virtual void fileRenamed(const QByteArray& from, const QByteArray& to) = 0;
        /// The root left its path, or one that was awaited may have come. `movedTo`, where it is
        /// not empty, is the path to which the root, or a folder that it lies in, was renamed.
        virtual void rootChanged(const QByteArray& path, const QByteArray& movedTo) = 0;
        /// No more folders can be watched; told once for each root.
        virtual void limitReached(const QByteArray& root) = 0;
        /// The kernel lost events; all watches have to be made anew.
        virtual void overflowed() = 0;
    };

    /// How long the second half of a rename may be behind the first.
    static constexpr std::chrono::milliseconds renameTime{20};

    /// The sink outlives this object. Adding watches ends when the token says so.
    InotifyTree(Sink& sink, std::stop_token stop);
    ~InotifyTree();
    InotifyTree(const InotifyTree&) = delete;
    InotifyTree& operator=(const InotifyTree&) = delete;

    /// -1 if the system refused.
    [[nodiscard]] int descriptor() const { return _descriptor; }

    /// Watches the roots; one that lies in another is only asked about for `rootChanged`, which
    /// is told at once of those that are not there. Those
    /// that are `awaited` are told of by that, too, as soon as something is at their path, which
    /// may be at once; what happens in it then is told as that of any root. Of those that are
    /// `flat` nothing below the folder itself is watched.
    void addRoots(
        const std::vector<QByteArray>& roots, const std::vector<QByteArray>& awaited = {},
        const std::vector<QByteArray>& flat = {});
    /// Reads and handles what the kernel has.
    void readEvents(Clock::time_point now);
    /// First halves of renames whose other half did not come were moves to elsewhere.
    void expireRenames(Clock::time_point now);
    /// When the next of them expires.
    [[nodiscard]] std::optional<Clock::time_point> nextExpiry() const;

private:
    struct Node {
        int watch = -1;
        Node* parent = nullptr;
        QByteArray name; ///< the whole path for a node without a parent
        QByteArray root; ///< of the watched root that it was found under
        std::map<QByteArray, Node*> children;
    };
    struct Rename {
        std::uint32_t cookie;
        bool isFolder;
        QByteArray path;
        Node* node; ///< detached from its parent; nullptr for files
        Clock::time_point deadline;
    };

    /// A folder above roots.
    struct Ancestor {
        QByteArray path;
        std::vector<QByteArray> roots; ///< below it
    };
    /// The first half of a rename of a root, or of a folder above one.
    struct Departure {
        std::uint32_t cookie;
        QByteArray path;
        Clock::time_point deadline;
    };

    void handle(const inotify_event& event, Clock::time_point now);
    void noteMovesOfRoots(const inotify_event& event, Clock::time_point now);
    void lookForAwaited(const QByteArray& path);
    void handleSelf(int watch, std::uint32_t mask);
    void handleFolder(Node& parent, const QByteArray& name, const inotify_event& event);
    void handleFile(const Node& parent, const QByteArray& name, const inotify_event& event);
    void renamedFrom(
        Node& parent, const QByteArray& name, const inotify_event& event, Clock::time_point now);
    void renamedTo(Node& parent, const QByteArray& name, const inotify_event& event);
    void movedAway(const Rename& rename);
    void addRoot(const QByteArray& root);
    [[nodiscard]] bool isFlat(const QByteArray& root) const;
    void watchAncestors(const QByteArray& root, std::uint32_t mask);
    /// With `announce`, all that is found is told as created.
    void addFolder(Node* parent, const QByteArray& name, const QByteArray& root, bool announce);
    struct AddedNode {
        Node* node = nullptr; ///< nullptr if the folder can't be watched, or is known elsewhere
        bool isNew = false;
    };
    AddedNode
    addNode(Node* parent, const QByteArray& name, const QByteArray& path, const QByteArray& root);
    void watchMissed(Node& moved);
    void tellRootsBelow(const QByteArray& path);
    void detach(Node& node);
    void removeNode(Node& node);
    void forgetInRenames(const Node& node);
    [[nodiscard]] Node* nodeOf(int watch) const;
    /// Whether `other`, which may be nothing, is the node or below it.
    [[nodiscard]] static bool isAtOrAbove(const Node& node, const Node* other);
    [[nodiscard]] static QByteArray pathOf(const Node& node);
    [[nodiscard]] static QByteArray pathIn(const Node& folder, const QByteArray& name);

    Sink& _sink;
    const std::stop_token _stop;
    int _descriptor;
    std::vector<QByteArray> _roots;
    std::vector<QByteArray> _flat;
    std::vector<QByteArray> _rootsAtLimit;
    std::unordered_map<int, std::unique_ptr<Node>> _nodes; // by watch
    std::unordered_map<int, Ancestor> _ancestors;          // by watch
    std::vector<QByteArray> _awaited;
    std::vector<Rename> _renames;
    std::vector<Departure> _departures;
};

} // namespace platform
