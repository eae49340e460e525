#pragma once

#include "codec/pixels/Decoder.h"
#include "codec/process/MemoryBudget.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"

#include <QByteArray>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace codec::process {

class DecoderHelper;

/// The decoder processes that are free, and who gets the next one. Those who wait are served by
/// their urgency. Thumbnails leave the reserved processes alone, and give way altogether while
/// somebody waits for the focus. The focus itself waits for nobody: where all processes are taken,
/// it gets one more. Any thread. Kept alive by whoever holds a process of it.
class HelperShelf : public std::enable_shared_from_this<HelperShelf> {
public:
    using Helper = std::unique_ptr<DecoderHelper>;

    struct Settings {
        QByteArray executable;
        std::uint64_t addressSpaceBytes = 0;
        int shared = 1;   ///< processes for all, at least 1
        int reserved = 1; ///< processes more, which thumbnails never take
        std::function<std::uint64_t()> availableMemory;
    };

    /// Starts nothing yet.
    explicit HelperShelf(Settings settings);
    /// Ends the processes.
    ~HelperShelf();
    HelperShelf(const HelperShelf&) = delete;
    HelperShelf& operator=(const HelperShelf&) = delete;

    /// Has all processes started that are not running, and does not wait for that.
    void start();
    /// Has one process started, and waits until it begins to come up: some milliseconds.
    void startOne();
    [[nodiscard]] MemoryBudget& memory() { return _memory; }
    /// How many wait for a process.
    [[nodiscard]] int waiting();

    /// A process for the time of one operation, or of several.
    class Lease {
    public:
        /// Waits for one, unless it is stopped.
        Lease(std::shared_ptr<HelperShelf> shelf, Urgency urgency, const std::stop_token& stop);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        /// Whether there is a living process; a lost one is replaced here.
        [[nodiscard]] bool isUsable();
        /// Only while it is usable.
        [[nodiscard]] DecoderHelper& helper() { return **_helper; }
        /// Whether the process is there and lives, and nothing is replaced.
        [[nodiscard]] bool isAlive() const;
        /// Nobody waits any longer for what the process does: others need not give way to it.
        void setInBackground();
        [[nodiscard]] HelperShelf& shelf() { return *_shelf; }

    private:
        const std::shared_ptr<HelperShelf> _shelf;
        const Urgency _urgency;
        bool _isInBackground = false;
        std::optional<Helper> _helper;
    };

private:
    static constexpr std::size_t classes = 5;

    [[nodiscard]] Helper startHelper();
    /// It may have been started otherwise meanwhile; one too many ends with this.
    void putOnShelf(Helper helper);
    [[nodiscard]] bool isAnyMissing();
    [[nodiscard]] std::optional<Helper> take(const std::stop_token& stop, Urgency urgency);
    void giveBack(Helper helper, Urgency urgency, bool wasInBackground);
    void stopWaitingFor(Urgency urgency);
    /// Whether there is a process for this class, whoever else waits.
    [[nodiscard]] bool hasProcessFor(Urgency urgency) const VELMORA_REQUIRES(_mutex);
    [[nodiscard]] bool isNext(Urgency urgency) const VELMORA_REQUIRES(_mutex);
    [[nodiscard]] static bool isThumbnail(Urgency urgency) {
        return urgency == Urgency::ThumbnailOnShow || urgency == Urgency::Thumbnail;
    }
    void tellRefusals(const DecoderHelper& helper) VELMORA_REQUIRES(_mutex);

    const Settings _settings;
    MemoryBudget _memory{_settings.availableMemory};
    platform::Mutex _mutex;
    platform::Condition _changed;
    /// An empty entry is a process still to be started.
    std::vector<Helper> _idle VELMORA_GUARDED_BY(_mutex);
    std::array<int, classes> _waiting VELMORA_GUARDED_BY(_mutex){};
    int _thumbnailsAtWork VELMORA_GUARDED_BY(_mutex) = 0;
    int _focusAtWork VELMORA_GUARDED_BY(_mutex) = 0;
    int _surplus VELMORA_GUARDED_BY(_mutex) = 0; ///< processes beyond the settings
    bool _toldRefusals VELMORA_GUARDED_BY(_mutex) = false;
    /// Processes end with the thread that started them, so that none outlives the program.
    platform::OperationQueue _starter{QStringLiteral("decoders")};
};

} // namespace codec::process
