#pragma once

#include "browser/state/BrowserLeafList.h"
#include "group/FolderPaths.h"
#include "viewer/controller/PBImageViewController.h"

#include <memory>
#include <optional>
#include <vector>

class PBOpenFiles;

/// What the photo bin holds for what the browser shows. Main thread.
namespace LargeViewLists {

using List = PBImageViewController::List;

/// The groups from a leaf up to the top level: by their values, a leaf of a tree that was made anew
/// is known again.
using GroupPath = std::vector<std::shared_ptr<PBGroupItemData>>;
/// That of a leaf that is on display; empty for nullptr.
[[nodiscard]] GroupPath groupPath(const std::shared_ptr<PBGroupItemData>& leaf);

/// For a photograph that is opened: the group that it stands in; or, where two or more are
/// selected, those.
[[nodiscard]] List forEntering(const BrowserLeafList& leaves, const PBImageBrowserIndex& index);

/// What the list that is shown becomes after the tree was made anew; nothing where it stays as it
/// is. A request to open files comes first, then the group that the list mirrors, which is empty
/// where it is gone; of selected photographs those stay that are still there.
[[nodiscard]] std::optional<List> afterRebuild(
    const BrowserLeafList& leaves, const PhotoBin& bin, const GroupPath& path,
    PBOpenFiles* openFiles, const group::FolderPaths& folderPaths);

} // namespace LargeViewLists
