#pragma once

class BrowsingSettings;
class BuildThumbNotifier;
class FMDatabase;
class PBAliasManager;
class PBAliasResolver;
class PBAppDelegate;
class PBFolderLister;
class PBGeoManager;
class PBGroupTreeDataSource;
class PBImageBufferManager;
class PBImageImporterManager;
class PBLoadImageManager;
class PBPathHistory;
class Preferences;
struct FileServices;
struct ThumbnailCache;

namespace fileactions {
class EditRunner;
}
namespace platform {
class Mutex;
class OperationQueue;
class UserDefaults;
} // namespace platform

/// What the main window is built on. Only what puts the window together takes it whole and hands
/// on; every other class names the few that it uses. All outlive the window.
struct ShellServices {
    PBAppDelegate& delegate;
    BrowsingSettings& browsing;
    Preferences& preferences;
    platform::UserDefaults& userDefaults;

    /// The main thread's connections, and that of the preload queue.
    FMDatabase& mainFileDb;
    FMDatabase& mainThumbDb;
    FMDatabase& preloadThumbDb;

    platform::OperationQueue& scanOperationQueue;
    platform::OperationQueue& preloadThumbnailOperationQueue;
    platform::OperationQueue& buildThumbOperationQueue;

    PBAliasManager& aliasManager;
    PBAliasResolver& aliasResolver;
    PBFolderLister& folderLister;
    PBPathHistory& pathHistory;
    /// Taken around the rewrite of folder rows when a root is added.
    platform::Mutex& insertFolderAliasLock;

    PBGroupTreeDataSource& groupTreeDataSource;
    BuildThumbNotifier& buildThumbNotifier;
    PBGeoManager& geoManager;
    PBImageImporterManager& imageImporterManager;

    /// The line of large pictures, and which items may hold them.
    PBLoadImageManager& loadImageManager;
    PBImageBufferManager& imageBufferManager;
    const FileServices& files;
    const ThumbnailCache& thumbnailCache;
    /// What the user does to photographs.
    fileactions::EditRunner& edits;
};
