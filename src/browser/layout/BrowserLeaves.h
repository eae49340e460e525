#pragma once

#include <QSizeF>

#include <cstdint>
#include <span>

/// The leaves of the group tree in their order, as far as the layout looks at them.
class BrowserLeaves {
public:
    virtual ~BrowserLeaves() = default;
    [[nodiscard]] virtual std::int64_t leafCount() const = 0;
    [[nodiscard]] virtual std::int64_t imageFileCount(std::int64_t group) const = 0;
    /// Only the leaf's head is shown.
    [[nodiscard]] virtual bool isCollapsedForBrowser(std::int64_t group) const = 0;
    /// The pixel sizes as shown, rotation applied, of as many images as there is room for, from
    /// `first` on.
    virtual void
    displaySizes(std::int64_t group, std::int64_t first, std::span<QSizeF> sizes) const = 0;
};
