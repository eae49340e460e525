#pragma once

#include "group/PBGroupItem.h"
#include "image/large/LargeImageRequests.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class PhotoBinHost;

/// The strip as the photo bin moves it.
class PhotoBinStrip {
public:
    virtual ~PhotoBinStrip() = default;
    virtual void scrollIndexToCenter(std::int64_t index, bool animation) = 0;
    virtual void focusDidChange() = 0;
};

/// The photographs that the large view goes through, and the one of them that it shows: the focus.
/// The list is the bin's own; it changes only when another one is handed over. Indices are those of
/// the list. Main thread.
class PhotoBin {
public:
    /// Jumps over so many cells or more are not shown as a motion.
    static constexpr std::int64_t farJump = 50;

    /// Both outlive this object.
    PhotoBin(PhotoBinHost& host, PhotoBinStrip& strip) : _host(host), _strip(strip) {}

    [[nodiscard]] const PBImageFileArray& fileItemArray() const { return _fileItemArray; }
    [[nodiscard]] std::int64_t count() const { return std::ssize(_fileItemArray); }
    /// Takes effect with the next `reloadFocus`.
    void setFileItemArray(PBImageFileArray items) { _fileItemArray = std::move(items); }
    /// nullptr for an index outside of the list.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> itemAt(std::int64_t index) const;
    /// The group whose photographs the list mirrors; nullptr for a list of selected ones.
    [[nodiscard]] const std::shared_ptr<PBGroupItemData>& groupItem() const { return _groupItem; }
    void setGroupItem(std::shared_ptr<PBGroupItemData> data) { _groupItem = std::move(data); }

    /// -1 without a focus.
    [[nodiscard]] std::int64_t focusIndex() const { return _focusIndex; }
    [[nodiscard]] const std::shared_ptr<PBImageFileItem>& focusImageFileItem() const {
        return _focusImageFileItem;
    }
    void setFocusImageFileItem(std::shared_ptr<PBImageFileItem> item);
    /// The focus, which there is, has come again as another item: that stays on show as it is. It
    /// has its place in the list with the next `refreshFocusIndex`.
    void replaceFocusImageFileItem(const std::shared_ptr<PBImageFileItem>& item);
    /// Nothing is shown any more; nobody is asked to show that.
    void forgetFocus();
    /// The direction of the last move: -1, 0 or 1.
    void setLoadDirection(int direction) { _loadDirection = direction; }

    /// Finds the focus in the list as it is now. A photograph that is still there stays on show;
    /// one that came back as another item is shown as that, and anew if its file was; for one that
    /// is gone the photograph at its index takes over, or the last.
    void refreshFocusIndex();

    [[nodiscard]] bool canPrev() const { return _focusIndex > 0; }
    [[nodiscard]] bool canNext() const { return _focusIndex >= 0 && _focusIndex < count() - 1; }
    [[nodiscard]] bool canFirst() const { return count() > 0 && _focusIndex != 0; }
    [[nodiscard]] bool canLast() const { return count() > 0 && _focusIndex != count() - 1; }
    void navigateToPreviousImage();
    void navigateToNextImage();
    void navigateToFirstImage();
    void navigateToLastImage();
    /// A click on a cell.
    void goTo(std::int64_t index);
    /// The strip has come to rest with that cell in the middle.
    void stoppedAt(std::int64_t index, int direction);

    /// Up to so many photographs in the direction of the last move, with their indices: those
    /// behind the focus, the nearest first; or those before it, the nearest last. At an end, those
    /// of the other direction.
    [[nodiscard]] std::vector<IndexedImage> preloadImageFileItemWithCount(std::int64_t count) const;

private:
    void moveTo(std::int64_t target, int direction, bool animation);
    void changeFocus(std::int64_t index);
    void takeFocus(std::int64_t index);
    void replaceFocus(std::int64_t index);
    [[nodiscard]] std::int64_t indexOfFocus() const;
    /// -1 where none is that to the focus, which there is.
    [[nodiscard]] std::int64_t indexOf(PBImageFileItem::Sameness sameness) const;

    PhotoBinHost& _host;
    PhotoBinStrip& _strip;
    PBImageFileArray _fileItemArray;
    std::shared_ptr<PBGroupItemData> _groupItem;
    std::int64_t _focusIndex = -1;
    std::shared_ptr<PBImageFileItem> _focusImageFileItem;
    int _loadDirection = 0;
};
