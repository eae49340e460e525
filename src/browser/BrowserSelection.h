#pragma once

#include "browser/BrowserLeafList.h"

#include <QStringList>

#include <cstdint>
#include <vector>

/// The selection of the browser. It lives in the items themselves, so that it survives every swap
/// of trees; every question walks the leaves. `includeCollapse` says whether images of folded
/// leaves take part. Main thread.
class BrowserSelection {
public:
    /// The leaves outlive this object.
    explicit BrowserSelection(const BrowserLeafList& leaves) : _leaves(leaves) {}

    /// Both answer whether any image has changed.
    bool selectAll(bool select, bool includeCollapse) const;
    /// From one index to the other, in whichever order they stand; false for an invalid one.
    bool selectFrom(
        const PBImageBrowserIndex& from, const PBImageBrowserIndex& to, bool select,
        bool includeCollapse) const;
    /// Keeps the present state as the one that a drag starts from.
    void storeCommandSelect(bool includeCollapse) const;

    [[nodiscard]] std::int64_t itemCount(bool includeCollapse) const;
    [[nodiscard]] std::int64_t selectCount(bool includeCollapse) const;
    [[nodiscard]] bool hasSelect(bool includeCollapse) const;
    /// Invalid without a selection.
    [[nodiscard]] PBImageBrowserIndex firstSelectItem(bool includeCollapse) const;
    [[nodiscard]] PBImageBrowserIndex lastSelectItem(bool includeCollapse) const;
    /// In the order of the sheet.
    [[nodiscard]] PBImageFileList selectedFileArray(bool includeCollapse) const;
    /// Images whose folder is not there are left out.
    [[nodiscard]] QStringList
    selectedFilePath(const group::FolderPaths& folders, bool includeCollapse) const;
    /// For each leaf with selected images the nodes that lead to them, for removing them from
    /// another copy of the tree.
    [[nodiscard]] std::vector<PBGroupItemChain>
    selectedFileGroupTreeArray(bool includeCollapse) const;

private:
    const BrowserLeafList& _leaves;
};
