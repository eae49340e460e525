#pragma once

#include "browser/layout/BrowserLayout.h"
#include "group/PBGroupItem.h"
#include "image/BrowserOrder.h"

#include <memory>
#include <vector>

/// Whether images of folded leaves take part.
enum class FoldedLeaves { Excluded, Included };

/// What the browser shows: the leaves of the live tree as they were when it was last told to look.
/// It holds on to data and images, so that a tree that goes away in the middle of something leaves
/// nothing dangling. Main thread.
class BrowserLeafList final : public BrowserLeaves, public BrowserOrder {
public:
    struct Leaf {
        std::shared_ptr<PBGroupItemData> data;
        PBImageFileArray imageFiles;
    };

    /// Answers for each leaf what it was before.
    std::vector<BrowserLayout::Former>
    setLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves);
    /// Looks again at the images of those leaves that are still in the live tree.
    void refresh();

    [[nodiscard]] std::int64_t leafCount() const override { return std::ssize(_leaves); }
    [[nodiscard]] std::int64_t imageFileCount(std::int64_t group) const override;
    [[nodiscard]] bool isCollapsedForBrowser(std::int64_t group) const override;
    void
    displaySizes(std::int64_t group, std::int64_t first, std::span<QSizeF> sizes) const override;

    [[nodiscard]] const Leaf& leaf(std::int64_t group) const {
        return _leaves[static_cast<std::size_t>(group)];
    }
    /// nullptr for an index that names no image.
    [[nodiscard]] std::shared_ptr<PBImageFileItem>
    imageFileAtIndex(const PBImageBrowserIndex& index) const;
    /// By identity; looks near what is on show first, then everywhere.
    [[nodiscard]] PBImageBrowserIndex
    indexForImageFile(const PBImageFileItem& imageFile) const override;
    /// nullptr too has no index.
    [[nodiscard]] PBImageBrowserIndex
    indexForImageFile(const std::shared_ptr<PBImageFileItem>& imageFile) const {
        return imageFile ? indexForImageFile(*imageFile) : PBImageBrowserIndex{};
    }
    /// Of the item that shows this photograph, as which it may have come again.
    [[nodiscard]] PBImageBrowserIndex indexOfSamePhotograph(const PBImageFileItem& imageFile) const;
    /// The leaf with this data; -1 if there is none.
    [[nodiscard]] std::int64_t groupOfData(const PBGroupItemData& data) const;
    /// Where searches begin.
    void setVisible(const PBImageBrowserIndex& begin) { _visible = begin; }

    /// Calls with index and image for each image in order.
    template <typename Function>
    void forEachImage(FoldedLeaves folded, Function&& function) const;
    /// Whether the images of a leaf take part.
    [[nodiscard]] bool takesPart(std::int64_t group, FoldedLeaves folded) const {
        return folded == FoldedLeaves::Included || !isCollapsedForBrowser(group);
    }

private:
    [[nodiscard]] PBImageBrowserIndex
    findNear(const PBImageFileItem& imageFile, const PBImageBrowserIndex& start) const;

    std::vector<Leaf> _leaves;
    PBImageBrowserIndex _visible;
};

template <typename Function>
void BrowserLeafList::forEachImage(FoldedLeaves folded, Function&& function) const {
    for (std::int64_t group = 0; group < leafCount(); ++group) {
        if (!takesPart(group, folded)) continue;
        std::int64_t item = 0;
        for (const auto& imageFile : leaf(group).imageFiles)
            function(PBImageBrowserIndex{group, item++}, imageFile);
    }
}
