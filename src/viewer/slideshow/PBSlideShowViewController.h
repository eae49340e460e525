#pragma once

#include "group/PBGroupItem.h"
#include "image/large/LargeImageRequests.h"
#include "viewer/slideshow/SlideshowClock.h"
#include "viewer/slideshow/SlideshowOrder.h"
#include "viewer/slideshow/SlideshowSettings.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <random>

class QKeyEvent;
class SlideshowHost;
class SlideshowPictures;
class SlideshowStage;

namespace platform {
class IdleInhibitor;
class UserDefaults;
} // namespace platform

/// Timing and navigation of a show. There is no fixed rhythm: a step waits until the picture is
/// there and its transition has ended, and only then the interval begins. Stopped, playing or
/// paused; what it shows goes to the stage. Main thread.
class PBSlideShowViewController final : public QObject {
    Q_OBJECT

public:
    /// All outlive this object, but for the stage, which may go first once the show was stopped.
    struct Parts {
        platform::UserDefaults& userDefaults;
        SlideshowPictures& pictures;
        SlideshowStage& stage;
        SlideshowClock& clock;
        platform::IdleInhibitor& inhibitor;
        SlideshowHost& host;
    };
    explicit PBSlideShowViewController(const Parts& parts);
    ~PBSlideShowViewController() override;

    /// What a show is of, and the index that it begins with; nothing plays yet. Not for an empty
    /// list.
    void setFileItemArray(PBImageFileArray items, std::int64_t focusIndex);
    void play();
    void stop();
    void playOrPause();
    /// Manual steps: nothing happens unless the show is paused.
    void prevImage();
    void nextImage();
    void firstImage();
    void lastImage();
    /// Back to the large view, which goes to the photograph shown last.
    void exitSlideshow();
    void cancelOperation() { exitSlideshow(); }
    /// Whether the key means something here; then it was done.
    [[nodiscard]] bool doKeyDown(const QKeyEvent& event);
    void mouseMoved(bool isOverControls);
    /// A menu is open, or something else that the controls have to stay for.
    void holdControls(bool isHeld);

    [[nodiscard]] const SlideshowSettings& settings() const { return _settings; }
    void intervalMenuClicked(int seconds);
    void transitionMenuClicked(TransitionStyle style);
    void setLoopPlay(bool isLoopPlay);
    void setShuffled(bool isShuffled);

    /// Place in the order of the show; -1 when stopped.
    [[nodiscard]] std::int64_t fileIndex() const { return _fileIndex; }
    [[nodiscard]] bool isPause() const { return _isPause; }
    [[nodiscard]] bool isStopped() const { return _fileIndex < 0; }
    [[nodiscard]] std::int64_t count() const { return _order.count(); }
    /// nullptr when stopped.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> currentItem() const;
    [[nodiscard]] bool canPrev() const;
    [[nodiscard]] bool canNext() const;

Q_SIGNALS:
    /// What the control bar shows: buttons, menus.
    void updateControlUI();
    /// Control bar and cursor are to be seen, or not.
    void showController(bool isShown);
    /// The show is over, and has been for a turn of the loop.
    void didExit();

private:
    void doPlay();
    void transitionSlideShow();
    void doTransitionToImage(const QImage& image, double angle);
    void tryPreloadImagesIncludeCurrent(bool includeCurrent);
    void loadImageFinished(const PBImageFileItem& item);
    void animationDidStop(bool finished);
    void slideshowTimer();
    void startSlideshowTimer();
    void stopSlideshowTimer();
    void startShowHideControllTimer();
    void stopShowHideControllTimer();
    void setPause(bool isPause);
    void step(std::int64_t target, bool isBackwards);
    void doExit();
    [[nodiscard]] bool isLastOfShow() const;
    [[nodiscard]] IndexedImage imageAt(std::int64_t place) const;

    const Parts _parts;
    SlideshowSettings _settings;
    PBImageFileArray _fileItemArray;
    SlideshowOrder _order;
    std::mt19937 _random{std::random_device{}()};
    std::int64_t _fileIndex = -1;
    bool _isPause = true;
    bool _isPlayPrev = false;
    bool _isWaiting = false; ///< for the picture of the index
    bool _isExiting = false;
};
