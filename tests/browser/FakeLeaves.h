#pragma once

#include "browser/layout/BrowserLayout.h"
#include "support/Support.h"

/// Leaves that are nothing but sizes.
struct FakeLeaves final : BrowserLeaves {
    struct Leaf {
        std::vector<QSizeF> sizes;
        bool isCollapsed = false;
    };

    std::int64_t leafCount() const override { return std::ssize(leaves); }
    std::int64_t imageFileCount(std::int64_t group) const override {
        return std::ssize(leaf(group).sizes);
    }
    bool isCollapsedForBrowser(std::int64_t group) const override {
        return leaf(group).isCollapsed;
    }
    void
    displaySizes(std::int64_t group, std::int64_t first, std::span<QSizeF> sizes) const override {
        for (QSizeF& size : sizes)
            size = leaf(group).sizes.at(static_cast<std::size_t>(first++));
        measured += std::ssize(sizes);
    }
    const Leaf& leaf(std::int64_t group) const {
        return leaves.at(static_cast<std::size_t>(group));
    }

    std::vector<Leaf> leaves;
    mutable std::int64_t measured = 0; ///< how many sizes were asked for
};

struct FakeTextWidths final : BrowserTextWidths {
    double fileNameWidth(const PBImageBrowserIndex&) const override { return name; }
    double fileSizeWidth(const PBImageBrowserIndex&) const override { return 40; }
    double imageSizeWidth() const override { return 60; }
    double name = 80;
};
