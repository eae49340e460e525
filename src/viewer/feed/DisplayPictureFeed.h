#pragma once

#include "platform/tasks/OperationQueue.h"
#include "viewer/feed/DisplayPicture.h"

#include <functional>
#include <memory>
#include <optional>

/// Makes what a view paints at rest, on a thread of its own. There is one picture, that of the
/// state wanted last; while a view moves it wants nothing and paints the version itself. Main
/// thread.
class DisplayPictureFeed {
public:
    /// `ready` runs on the main thread, never within a call, once the picture for the state wanted
    /// last is there; not after this object has gone.
    explicit DisplayPictureFeed(std::function<void()> ready);
    /// Waits for what runs, which a stop ends within a row of pixels.
    ~DisplayPictureFeed();
    DisplayPictureFeed(const DisplayPictureFeed&) = delete;
    DisplayPictureFeed& operator=(const DisplayPictureFeed&) = delete;

    /// The picture for exactly this state, but that its `state` names no images; nullptr while it
    /// is made, which this begins unless it has begun. What was wanted before is dropped, but for
    /// another frame of the same picture at the same place: that is finished, and given out until
    /// this one is there, so that an animation does not change to and fro. Made at once where that
    /// takes less than a frame.
    const DisplayPicture* pictureFor(const DisplayState& state);
    /// Lets picture and work go: the view moves, or is left.
    void clear();

    [[nodiscard]] bool isBusy() const { return _work != nullptr; }

private:
    class Work;
    void stopWork();
    void didMake(const std::shared_ptr<Work>& work);
    void keep(DisplayPicture picture);
    /// What is there was made for this place, if maybe for another frame.
    [[nodiscard]] bool isMadeFor(const DisplayState& state) const;

    const std::function<void()> _ready;
    std::optional<DisplayPicture> _picture;
    std::weak_ptr<const PBImages> _madeOf;
    std::shared_ptr<Work> _work; ///< what is made
    std::shared_ptr<DisplayPictureFeed*> _alive = std::make_shared<DisplayPictureFeed*>(this);
    platform::OperationQueue _queue;
};
