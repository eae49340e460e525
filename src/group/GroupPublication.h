#pragma once

#include "core/PBMutableNumber.h"
#include "group/PBGroupItem.h"

#include <functional>
#include <memory>

namespace group {

/// One push of the work tree to the display.
struct GroupPublication {
    /// The tree that was copied: its identity is that of the scan. Not kept alive by this, or the
    /// display would end up with the work of destroying it.
    std::weak_ptr<const PBGroupItemArray> workGroupItemArray;
    PBGroupItemArray groupItemArray; ///< the copy
    /// After an edit of stars, flag or tags: the browser's position becomes the one to keep.
    bool updateScrollCapture = false;

    /// Whether the tree that was copied is this one.
    [[nodiscard]] bool isOf(const std::weak_ptr<const PBGroupItemArray>& workTree) const {
        return !workGroupItemArray.owner_before(workTree) &&
               !workTree.owner_before(workGroupItemArray);
    }
};

/// Hands a publication over to the display. Any thread; never blocks.
using GroupPublisher = std::function<void(std::shared_ptr<GroupPublication>)>;

/// Copies the work tree. On the thread of the tree.
[[nodiscard]] std::shared_ptr<GroupPublication> makeGroupPublication(
    const std::shared_ptr<const PBGroupItemArray>& workGroupItemArray,
    bool updateScrollCapture = false);

/// How long an operation lets new items pile up before it pushes them.
struct PushLimits {
    quint64 count = 0;  ///< a push is due above this
    double seconds = 0; ///< and above this, if there is any new item
};
inline constexpr PushLimits catalogueScanLimits{100, 1.0};
inline constexpr PushLimits folderScanLimits{200, 1.0};

/// The rhythm of pushes that the operations of one scan share. The two boxes hold the seconds since
/// 1970 of the last push, and the number of items added since. On the scan thread.
class PushRhythm {
public:
    PushRhythm(std::shared_ptr<PBMutableNumber> time, std::shared_ptr<PBMutableNumber> count)
        : _time(std::move(time)), _count(std::move(count)) {}

    void itemWasAdded();
    /// With a focus open file every row is pushed at once. `now` in seconds since 1970.
    [[nodiscard]] bool isDue(const PushLimits& limits, bool hasFocusOpenFile, double now) const;
    void wasPushed(double now);

private:
    std::shared_ptr<PBMutableNumber> _time;
    std::shared_ptr<PBMutableNumber> _count;
};

/// Removes the images of each chain from a tree, together with the groups that this empties, and
/// answers those that were there. The chains come from another copy of the tree. `isCancelled`, if
/// there is one, is asked before each chain and each top-level group. On the thread of the tree.
PBImageFileList removeFileItemInGroupArray(
    PBGroupItemArray& groupArray, const std::vector<PBGroupItemChain>& removeGroupArray,
    const std::function<bool()>& isCancelled = {});

} // namespace group
