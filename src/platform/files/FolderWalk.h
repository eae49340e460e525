#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <stop_token>
#include <vector>

namespace platform {

/// Goes through all folders of one mounted file system, hidden ones too. What else is mounted in it
/// is left alone, and links are not followed. Any thread; reads lists of folders only.
class FolderWalk {
public:
    /// Told of each folder before it is listed; the inode number is that of the folder itself.
    using Visitor = std::function<void(std::uint64_t inode, const QByteArray& path)>;
    /// Called before each folder, while none is open, so that a file system can be unmounted
    /// meanwhile; false ends the walk.
    using Pause = std::function<bool()>;

    enum class End {
        Complete,   ///< every folder was listed to its end
        Unreadable, ///< some could not be looked at
        Stopped
    };

    FolderWalk(Visitor visitor, Pause pause, std::stop_token stop);

    /// All folders of the mount whose mount point is `top`. Begins near the path `nearest`, with
    /// the deepest folder on it that is there, and goes on with the folder around that.
    [[nodiscard]] End run(const QByteArray& top, const QByteArray& nearest);

private:
    [[nodiscard]] bool beginsAt(const QByteArray& top);
    [[nodiscard]] bool isOnMount(const QByteArray& path) const;
    void walk(const QByteArray& folder, const QByteArray& done);
    void list(const QByteArray& folder, const QByteArray& done);

    const Visitor _visitor;
    const Pause _pause;
    const std::stop_token _stop;
    std::uint64_t _mountId = 0;
    bool _isReadable = true;
    bool _isStopped = false;
    std::vector<QByteArray> _left;
};

} // namespace platform
