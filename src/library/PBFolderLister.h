#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace platform {
class BoundedCalls;
}

/// A folder within another one.
struct Subfolder {
    QString name;
    /// Tells it apart from its neighbours, also when it was renamed; 0 where that is not known.
    std::uint64_t inode = 0;
};
using Subfolders = std::vector<Subfolder>;

/// Lists folders for the sidebar.
class PBFolderLister {
public:
    using LateAnswer = std::function<void(const Subfolders& folders)>;

    virtual ~PBFolderLister() = default;

    /// Whether the next answers may be waited for at all. Main thread.
    void setWaits(bool waits) { _waits = waits; }
    [[nodiscard]] bool waits() const { return _waits; }

    /// The folders in the folder, hidden ones and packages left out, in the order in which they are
    /// shown. Nothing if the disk takes long; `late` then brings them, on the main
    /// thread. A folder that can't be read has none.
    [[nodiscard]] virtual std::optional<Subfolders>
    list(const QString& lane, const QString& folder, LateAnswer late) = 0;

private:
    bool _waits = true;
};

/// Lists off the main thread and waits only for as long as nobody notices. `lane` names the volume.
class PBBoundedFolderLister final : public PBFolderLister {
public:
    static constexpr std::chrono::milliseconds timeLimit{60};

    /// The calls outlive this object.
    explicit PBBoundedFolderLister(
        platform::BoundedCalls& calls, std::chrono::milliseconds limit = timeLimit)
        : _calls(calls), _limit(limit) {}

    [[nodiscard]] std::optional<Subfolders>
    list(const QString& lane, const QString& folder, LateAnswer late) override;

private:
    platform::BoundedCalls& _calls;
    const std::chrono::milliseconds _limit;
};

/// The work itself, on the calling thread: names in the order of the user's language, numbers by
/// their value.
[[nodiscard]] Subfolders subfoldersOf(const QString& folder);
