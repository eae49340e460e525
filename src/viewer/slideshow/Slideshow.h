#pragma once

#include "group/PBGroupItem.h"

#include <QObject>

#include <cstdint>
#include <memory>

class LargeImageRequests;
class PBLoadImageManager;
class PBSlideShowViewController;
class PBSlideshowContainerView;
class PBSlideshowView;
class QWidget;
class SlideshowClock;
class SlideshowHost;
class SlideshowPictures;

namespace platform {
class IdleInhibitor;
class UserDefaults;
} // namespace platform

/// The show of the program: puts its parts together when it is first wanted. Main thread.
class Slideshow final : public QObject {
    Q_OBJECT

public:
    /// All outlive this object, the window too.
    struct Parts {
        QWidget& window; ///< that it begins from, on whose screen it runs
        platform::UserDefaults& userDefaults;
        LargeImageRequests& requests;
        PBLoadImageManager& loadImageManager;
        SlideshowHost& host;
    };
    explicit Slideshow(const Parts& parts);
    ~Slideshow() override;

    /// Plays those photographs, from that index on. Nothing for an empty list, or while one plays.
    void start(PBImageFileArray items, std::int64_t focusIndex);
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] PBSlideShowViewController& slideShowViewController();

    /// For reports: where the show stands.
    struct State {
        QString state;  ///< "stopped", "playing" or "paused"
        QString engine; ///< "opengl" or "raster"; empty before the first show
        QString renderer;
        std::int64_t index = -1;
        QString name; ///< of the photograph
        int transition = 0;
        bool isTransitionRunning = false;
        bool areControlsShown = false;
        bool isFullScreen = false;
        bool isInhibited = false;
    };
    [[nodiscard]] State state() const;

Q_SIGNALS:
    /// The window of the show has gone.
    void didExit();

private:
    void build();

    const Parts _parts;
    std::unique_ptr<platform::IdleInhibitor> _inhibitor;
    std::unique_ptr<SlideshowPictures> _pictures;
    std::unique_ptr<SlideshowClock> _clock;
    PBSlideshowView* _view = nullptr; // a child of the container
    std::unique_ptr<PBSlideShowViewController> _controller;
    std::unique_ptr<PBSlideshowContainerView> _container;
};
