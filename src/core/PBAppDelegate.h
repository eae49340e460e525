#pragma once

#include <memory>

class PBOpenFiles;

/// The root object of the process, as the floors below it see it: what only the one who built
/// everything can do or know. All else is handed to those who use it. The implementation lives with
/// main(). Main thread.
class PBAppDelegate {
public:
    PBAppDelegate() = default;
    PBAppDelegate(const PBAppDelegate&) = delete;
    PBAppDelegate& operator=(const PBAppDelegate&) = delete;
    virtual ~PBAppDelegate() = default;

    /// Stops all background work and starts the display anew for the present selection.
    virtual void scan() = 0;
    /// Stops all background work and leaves the display.
    virtual void cancelScan() = 0;
    [[nodiscard]] virtual bool isScanning() const = 0;
    /// Brings photographs whose address was found since to the groups of their places.
    virtual void regroupPlaces() = 0;

    /// Brings what is watched in step with the mounted roots.
    virtual void updateWatchPathsInBackground() = 0;
    /// The files that scans take first; nullptr ends the request.
    virtual void setOpenFiles(std::shared_ptr<PBOpenFiles> openFiles) = 0;
    /// The pending request; may be empty.
    [[nodiscard]] virtual std::shared_ptr<PBOpenFiles> openFiles() const = 0;

    /// False while the selection of the last run is brought back.
    [[nodiscard]] virtual bool isAppDidFinishLaunch() const = 0;
    [[nodiscard]] virtual bool isLargeViewMode() const = 0;
    /// A slideshow covers the large view.
    [[nodiscard]] virtual bool isSlideShowMode() const = 0;
    virtual void setIsSlideShowMode(bool isSlideShowMode) = 0;
};
