#pragma once

#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class BuildThumbNotifier;
class FMDatabase;
class PBAliasManager;
class PBAliasResolver;
class PBFolderLister;
class PBGeoManager;
class PBImageImporterManager;
class PBGroupTreeDataSource;
class PBOpenFiles;
class PBPathHistory;
class ScanFactory;

namespace platform {
class OperationQueue;
class UserDefaults;
} // namespace platform

/// The chain of group types by which photographs are grouped, outermost first. Replaced as a whole,
/// so that a background reader always holds one that stays as it is.
using PBGroupTypeArray = std::shared_ptr<const std::vector<int>>;

/// The root object of the process, as the rest of the program sees it: connections, queues, the
/// browsing state and the scan control loop. The implementation lives with main(). The interface
/// floors may reach it through `defaultAppDelegate`; those below get what they need handed in.
///
/// Main thread, but for the queues, which may be used from any.
class PBAppDelegate {
public:
    PBAppDelegate() = default;
    PBAppDelegate(const PBAppDelegate&) = delete;
    PBAppDelegate& operator=(const PBAppDelegate&) = delete;
    virtual ~PBAppDelegate() = default;

    /// The installed delegate; nullptr before start-up and after quitting.
    [[nodiscard]] static PBAppDelegate* defaultAppDelegate();

    /// Connections, one for each thread that reads or writes: see each name's queue.
    [[nodiscard]] virtual FMDatabase& mainFileDb() = 0;
    [[nodiscard]] virtual FMDatabase& mainThumbDb() = 0;
    [[nodiscard]] virtual FMDatabase& scanFileDb() = 0;
    [[nodiscard]] virtual FMDatabase& preloadThumbDb() = 0;
    [[nodiscard]] virtual FMDatabase& buildThumbDb() = 0;

    /// Strictly serial queues.
    [[nodiscard]] virtual platform::OperationQueue& scanOperationQueue() = 0;
    [[nodiscard]] virtual platform::OperationQueue& preloadThumbnailOperationQueue() = 0;
    [[nodiscard]] virtual platform::OperationQueue& buildThumbOperationQueue() = 0;

    /// The folder roots, what finds and lists them, and the folders visited.
    [[nodiscard]] virtual PBAliasManager& aliasManager() = 0;
    [[nodiscard]] virtual PBAliasResolver& aliasResolver() = 0;
    [[nodiscard]] virtual PBFolderLister& folderLister() = 0;
    [[nodiscard]] virtual PBPathHistory& pathHistory() = 0;
    /// Brings what is held open, and what is watched, in step with the mounted roots.
    virtual void updateStartAccessURLs() = 0;
    virtual void updateWatchPathsInBackground() = 0;

    /// The two group trees, what makes scans and attached work, news of thumbnails, places.
    [[nodiscard]] virtual PBGroupTreeDataSource& groupTreeDataSource() = 0;
    [[nodiscard]] virtual ScanFactory& scanFactory() = 0;
    [[nodiscard]] virtual BuildThumbNotifier& buildThumbNotifier() = 0;
    [[nodiscard]] virtual PBGeoManager& geoManager() = 0;
    [[nodiscard]] virtual PBImageImporterManager& imageImporterManager() = 0;
    /// The pending request to open files; may be empty.
    [[nodiscard]] virtual std::shared_ptr<PBOpenFiles> openFiles() const = 0;
    virtual void setOpenFiles(std::shared_ptr<PBOpenFiles> openFiles) = 0;

    [[nodiscard]] virtual platform::UserDefaults& userDefaults() = 0;
    /// Taken around the rewrite of folder rows when a root is added.
    [[nodiscard]] virtual std::mutex& insertFolderAliasLock() = 0;

    /// The browsing state. A setter stores at once what has changed; it starts no scan.
    [[nodiscard]] virtual bool recurseSubFolder() const = 0;
    virtual void setRecurseSubFolder(bool recurse) = 0;
    [[nodiscard]] virtual PBGroupTypeArray groupTypeArray() const = 0;
    /// Compared by identity: the very same array changes nothing.
    virtual void setGroupTypeArray(PBGroupTypeArray chain) = 0;
    [[nodiscard]] virtual int sortType() const = 0;
    virtual void setSortType(int sortType) = 0;
    [[nodiscard]] virtual bool descendingSort() const = 0;
    virtual void setDescendingSort(bool descending) = 0;
    [[nodiscard]] virtual std::uint64_t filter() const = 0;
    virtual void setFilter(std::uint64_t filter) = 0;
    /// Never stored.
    [[nodiscard]] virtual QString searchString() const = 0;
    virtual void setSearchString(const QString& searchString) = 0;

    /// Stops all background work and starts the display anew for the present selection.
    virtual void scan() = 0;
    /// Stops all background work and leaves the display.
    virtual void cancelScan() = 0;
    /// The last job of the present scan has ended.
    virtual void scanFinished() = 0;
    [[nodiscard]] virtual bool isScanning() const = 0;

    [[nodiscard]] virtual bool isAppDidFinishLaunch() const = 0;
    [[nodiscard]] virtual bool isSlideShowMode() const = 0;
    virtual void setIsSlideShowMode(bool isSlideShowMode) = 0;
    [[nodiscard]] virtual bool isLargeViewMode() const = 0;

    /// Pixels of the longer side of a stored thumbnail: 512 on a window of more than one device
    /// pixel a point, else 256.
    [[nodiscard]] virtual int thumbnailSize() const = 0;
    /// Device pixels a point of the main window at start, at most 2.
    [[nodiscard]] virtual double backingScaleFactor() const = 0;
    /// The main screen at start, in points; all zero without one. `maxScreenSize` is its longer
    /// side.
    [[nodiscard]] virtual QRectF screenRect() const = 0;
    [[nodiscard]] virtual double maxScreenSize() const = 0;

protected:
    /// Installs the delegate; nullptr takes it away.
    static void setDefaultAppDelegate(PBAppDelegate* delegate);
};
