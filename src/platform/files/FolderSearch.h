#pragma once

#include <QByteArray>
#include <QSet>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <vector>

namespace platform {

/// Looks for a folder by its inode number in a few places, each to a bounded depth, until a moment
/// in time. Reads folder lists only: a candidate is opened by the caller's test alone.
class FolderSearch {
public:
    struct Place {
        QByteArray folder;
        int depth; // 1: its entries only
    };
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    FolderSearch(
        std::uint64_t inode, std::function<bool(const QByteArray& path)> isWanted, Clock clock,
        std::chrono::steady_clock::time_point end);

    /// Folders that are not to be touched, such as mount points of servers.
    void setAvoided(QSet<QByteArray> folders) { _avoided = std::move(folders); }

    /// Place after place; within each, nearer folders before deeper ones and among equals those
    /// changed last first. Nothing if the time ran out or all was seen.
    [[nodiscard]] std::optional<QByteArray> run(const std::vector<Place>& places);

private:
    struct Folder {
        QByteArray path;
        int depth;
        std::int64_t changed;
    };

    [[nodiscard]] bool isOver() { return _isOver = _isOver || _clock() >= _end; }
    [[nodiscard]] std::optional<QByteArray>
    list(const Folder& folder, std::vector<Folder>& subfolders);
    [[nodiscard]] bool isFirstVisit(const QByteArray& path, int depth, std::int64_t& changed);

    const std::uint64_t _inode;
    const std::function<bool(const QByteArray&)> _isWanted;
    const Clock _clock;
    const std::chrono::steady_clock::time_point _end;
    QSet<QByteArray> _avoided;
    bool _isOver = false;
    std::set<std::pair<std::uint64_t, std::pair<std::uint64_t, int>>>
        _visited; // device, inode, depth
};

} // namespace platform
