#pragma once

#include "image/large/LargeImageScreen.h"
#include "image/large/LoadPace.h"
#include "image/large/PBLoadImageOperation.h"
#include "platform/tasks/OperationQueue.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

/// The line of loads for large view and slideshow: one decode at a time, in an order that the
/// displays keep rearranging. What the user looks at goes to the head, what may come next to the
/// end. While a key is held, what would be passed before it is ready waits (see `LoadPace`).
/// Everything but the decoding itself is main thread.
class PBLoadImageManager final {
public:
    using Operation = std::shared_ptr<PBLoadImageOperation>;
    /// Beyond it the head of the line goes, silently.
    static constexpr std::size_t mostWaiting = 10'000;

    /// The clock is that of the pace.
    explicit PBLoadImageManager(LoadPace::Clock clock = &std::chrono::steady_clock::now);
    /// Cancels what runs, and waits for it.
    ~PBLoadImageManager();
    PBLoadImageManager(const PBLoadImageManager&) = delete;
    PBLoadImageManager& operator=(const PBLoadImageManager&) = delete;

    /// The screen of the window that shows large pictures.
    [[nodiscard]] const LargeImageScreen& screen() const { return _screen; }
    /// With other colours than before all loads end, and the observers are told.
    void setScreen(const LargeImageScreen& screen);
    /// Called when the screen's colours are others than before, in the order in which they were
    /// added: who holds versions lets them expire, and who shows some asks anew. Until it is
    /// removed; one for each owner.
    void addColoursObserver(const void* owner, std::function<void()> observer);
    void removeColoursObserver(const void* owner);

    /// What goes to the head the user waits for, unless the job says otherwise: a running load that
    /// nobody waits for is stopped for it, and begins anew behind it.
    void addLoadImageOperation(Operation operation, bool atEnd);
    /// Of an operation that waits. One that runs is known to be waited for from then on.
    void moveLoadImageOperaToHead(const PBLoadImageOperation& operation);
    struct Found {
        Operation operation; ///< nullptr: there is none
        bool isLoading = false;
    };
    /// The job of the item at exactly that scale; not one that was cancelled, which brings nothing.
    [[nodiscard]] Found
    loadImageOperationOfContextObj(const PBImageFileItem& item, double scale) const;

    /// The focus moves: jobs of all other items end, the first of these is the new focus, and what
    /// of it could not be loaded "now" may be asked for again. With the index of the focus in its
    /// list the line knows how fast the user steps, and in which direction.
    void cancelAllOperationExceptContextObjs(
        std::span<const std::shared_ptr<PBImageFileItem>> items,
        std::optional<std::int64_t> focusIndex = std::nullopt);
    /// As it was told last.
    [[nodiscard]] std::optional<std::int64_t> focusIndex() const { return _focusIndex; }
    /// A scan brought the photograph again as another item: what is loaded of the file is for that
    /// one from now on. Where the file is another by now its loads end.
    void
    itemWasReplaced(const PBImageFileItem& former, const std::shared_ptr<PBImageFileItem>& item);
    /// The key that stepped was let go: what is focused now is loaded without further waiting.
    void steppingDidEnd();
    /// No pictures are shown any more: the memory that they, and what was made of them, have taken
    /// goes back to the system, soon and not on the main thread.
    void returnFreeMemory();
    /// Starts the first job that may begin, if none runs.
    void tryFireOperation();

    /// Waiting and running.
    [[nodiscard]] std::size_t operationCount() const {
        return _waitingArray.size() + _loadingArray.size();
    }
    [[nodiscard]] const std::deque<Operation>& waitingOperations() const { return _waitingArray; }
    /// Jobs that began to run, those of them that were cancelled while they ran.
    struct Figures {
        std::uint64_t begun = 0;
        std::uint64_t stopped = 0;
        std::uint64_t begunInHaste = 0; ///< while a key was held
    };
    [[nodiscard]] const Figures& figures() const { return _figures; }

    /// For quitting: drops the line, stops what runs and waits for it. Nothing is told any more,
    /// and nothing begins.
    void finish();

private:
    [[nodiscard]] bool mayBegin(const Operation& operation) const;
    void giveWay();
    void begin(Operation operation);
    void didFinish(const Operation& operation);
    void noteTime(const PBLoadImageOperation& operation);

    LargeImageScreen _screen;
    std::vector<std::pair<const void*, std::function<void()>>> _coloursObservers;
    LoadPace _pace;
    std::optional<std::int64_t> _focusIndex;
    std::deque<Operation> _waitingArray;
    std::vector<Operation> _loadingArray; // at most one
    Figures _figures;
    bool _isFinished = false;
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<PBLoadImageManager*> _alive = std::make_shared<PBLoadImageManager*>(this);
    /// Frees pictures: letting hundreds of megabytes go takes longer than a frame.
    const std::shared_ptr<platform::OperationQueue> _releaseQueue;
    platform::OperationQueue _operationQueue;
};
