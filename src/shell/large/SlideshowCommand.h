#pragma once

#include "image/large/LargeImageRequests.h"
#include "viewer/slideshow/Slideshow.h"
#include "viewer/slideshow/SlideshowHost.h"

#include <memory>

class BrowserPane;
class LargeView;
class QMainWindow;
struct PBImageBrowserIndex;
struct ShellServices;

/// The way from the window into the slideshow, and back. Main thread.
class SlideshowCommand final : private SlideshowHost {
public:
    /// All outlive this object.
    struct Parts {
        const ShellServices& services;
        QMainWindow& window;
        BrowserPane& browserPane;
        LargeView& largeView;
    };
    explicit SlideshowCommand(const Parts& parts);
    ~SlideshowCommand() override;

    /// Plays what the large view goes through, from the photograph on that it shows. From the
    /// browser, the large view is entered first: with the photographs that are selected, or with
    /// the first one on show.
    void view_SlideshowView();
    /// Ends the show, if one plays: something else is to be seen.
    void end();
    [[nodiscard]] const Slideshow& slideshow() const { return _slideshow; }

private:
    void setIsSlideShowMode(bool isSlideShowMode) override;
    [[nodiscard]] std::shared_ptr<PBImageFileItem> focusImageFileItem() const override;
    void goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) override;

    [[nodiscard]] PBImageBrowserIndex indexToBeginWith() const;

    const Parts _parts;
    LargeImageRequests _requests;
    Slideshow _slideshow;
};
