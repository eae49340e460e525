#pragma once

#include "platform/tasks/Operation.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <vector>

class FMDatabase;

/// Removes folder roots from the catalogue, with all rows of their folders and files: whole or not
/// at all, and also when its queue is cancelled. Thumbnails are left behind: see
/// `ThumbnailCleaning`.
class PBRemoveAliasOperation final : public platform::Operation {
public:
    struct Roots {
        std::vector<qint64> aliasIds;
        /// The one among them that the user has just removed from the sidebar; 0 for none. It is
        /// marked as removed first, so that a run that is cut short is made good by the next start.
        qint64 askedFor = 0;
    };
    /// Called on the thread of the queue.
    using Ended = std::function<void(bool isRemoved)>;

    /// How long it waits for a catalogue that another program keeps locked: the user gets the root
    /// back rather than to wait for more.
    static constexpr std::chrono::seconds usualWait{5};

    /// `db` is the connection to `files.db` that belongs to the queue; it outlives the operation.
    PBRemoveAliasOperation(
        Roots roots, FMDatabase& db, Ended ended,
        std::chrono::milliseconds longestWait = usualWait);

    [[nodiscard]] bool mustRun() const override { return true; }

    /// The work itself.
    [[nodiscard]] static bool
    remove(const Roots& roots, FMDatabase& db, std::chrono::milliseconds longestWait = usualWait);

protected:
    void main() override;

private:
    const Roots _roots;
    FMDatabase& _db;
    const Ended _ended;
    const std::chrono::milliseconds _longestWait;
};
