#pragma once

class PBImageBufferManager;
class PBImageImporterManager;
class PBLoadImageManager;
class ThumbnailLoader;

namespace group {
class FolderPaths;
}

/// What the large view needs of the program. Main thread; all outlive the view.
struct ImageViewServices {
    PBLoadImageManager& loadImageManager;
    PBImageBufferManager& imageBufferManager;
    PBImageImporterManager& imageImporterManager;
    /// Through the main thread's connection.
    ThumbnailLoader& thumbnailLoader;
    const group::FolderPaths& folderPaths;
};
