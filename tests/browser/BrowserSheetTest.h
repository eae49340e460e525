#pragma once

#include "BrowserTree.h"

/// A tree on a sheet of three columns of the default size.
struct BrowserSheetTest : ::testing::Test, BrowserTextWidths {
    using Index = PBImageBrowserIndex;

    explicit BrowserSheetTest(std::initializer_list<int> counts = {}) : tree(counts) {
        layout.setLeaves(&leaves);
        layout.setWidth(3 * 166 + 4 * 15, 0);
        look();
    }
    double fileNameWidth(const PBImageBrowserIndex&) const override { return nameWidth; }
    double fileSizeWidth(const PBImageBrowserIndex&) const override { return 40; }
    double imageSizeWidth() const override { return 60; }
    void show(std::initializer_list<int> counts) {
        tree = BrowserTree(counts);
        look();
    }
    void look() {
        leaves.setLeafGroupItemArray(tree.leaves());
        layout.invalidate();
    }
    void fold(int group) {
        tree.data(group).setIsCollapsedForBrowser(true);
        layout.invalidate();
    }

    BrowserTree tree;
    BrowserLeafList leaves;
    BrowserLayout layout;
    double nameWidth = 80;
};
