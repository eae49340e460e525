#pragma once

#include "browser/state/BrowserLeafList.h"

#include <QStringList>

#include <cstdint>
#include <vector>

/// The selection of the browser. It lives in the items themselves, so that it survives every swap
/// of trees. A question walks the leaves from where a selected image was found last until all that
/// are selected anywhere were found, so that what moves on by an image is found at once. Main
/// thread.
class BrowserSelection {
public:
    /// The leaves outlive this object.
    explicit BrowserSelection(const BrowserLeafList& leaves) : _leaves(leaves) {}

    /// These answer whether any image has changed.
    bool selectAll(FoldedLeaves folded) const;
    bool deselectAll() const;
    /// Those that were not selected, and no others.
    bool invert(FoldedLeaves folded) const;
    /// Those with exactly so many stars, and no others.
    bool selectWithStars(quint64 stars, FoldedLeaves folded) const;
    /// From one index to the other, in whichever order they stand, without folded leaves; false for
    /// an invalid one.
    bool selectFrom(const PBImageBrowserIndex& from, const PBImageBrowserIndex& to) const;
    /// Keeps the present state as the one that a drag starts from.
    void storeCommandSelect() const;

    [[nodiscard]] std::int64_t itemCount(FoldedLeaves folded) const;
    [[nodiscard]] std::int64_t selectCount(FoldedLeaves folded) const;
    [[nodiscard]] bool hasSelect(FoldedLeaves folded) const;
    /// Invalid without a selection.
    [[nodiscard]] PBImageBrowserIndex firstSelectItem(FoldedLeaves folded) const;
    /// In the order of the sheet.
    [[nodiscard]] PBImageFileList selectedFileArray(FoldedLeaves folded) const;
    /// Images whose folder is not there are left out.
    [[nodiscard]] QStringList
    selectedFilePath(const group::FolderPaths& folders, FoldedLeaves folded) const;

private:
    template <typename Wanted>
    bool selectWhere(FoldedLeaves folded, Wanted wanted) const;
    /// Calls with index and image of each selected one until the function answers false: of many in
    /// their order, of few in any.
    template <typename Function>
    void forEachSelected(FoldedLeaves folded, Function&& function) const;

    const BrowserLeafList& _leaves;
    mutable PBImageBrowserIndex _found{0, 0}; ///< where a selected image was last
};
