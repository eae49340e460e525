#pragma once

#include "image/PBImageBrowserIndex.h"
#include "ui/PaintedItemsAccessible.h"

#include <optional>

class PBImageBrowserView;
class PBImageFileItem;

/// The browser for screen readers: a list of the heads of all leaves, each followed by the images
/// of its leaf unless that is folded. A head that is pressed is scrolled to; an image can be made
/// the current one, put into the selection or out of it, and opened. Main thread.
class BrowserAccessible final : public PaintedItemsAccessible {
public:
    explicit BrowserAccessible(PBImageBrowserView& view);

protected:
    [[nodiscard]] int itemCount() const override;
    [[nodiscard]] Item item(int index) const override;
    [[nodiscard]] QString itemText(int index, QAccessible::Text kind) const override;
    [[nodiscard]] QStringList itemActions(int index) const override;
    void perform(int index, const QString& action) override;
    [[nodiscard]] int itemAt(const QPoint& point) const override;
    [[nodiscard]] int currentItem() const override;
    [[nodiscard]] std::uint64_t generation() const override;

private:
    /// -1 for what is not in the list. The item `headItem` stands for the head.
    [[nodiscard]] int childIndexOf(std::int64_t group, std::int64_t item) const;
    struct Place {
        std::int64_t group;
        std::int64_t item;
        [[nodiscard]] PBImageBrowserIndex index() const { return {group, item}; }
    };
    [[nodiscard]] std::optional<Place> placeOf(int child) const;
    /// nullptr for a head.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> imageAt(const Place& place) const;
    [[nodiscard]] QString detailsOf(const Place& place, const PBImageFileItem& image) const;
    /// The head and the images of a leaf.
    [[nodiscard]] std::int64_t childrenOf(std::int64_t group) const;

    PBImageBrowserView& _view;
};
