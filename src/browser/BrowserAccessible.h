#pragma once

#include "image/PBImageBrowserIndex.h"

#include <QAccessibleWidget>

#include <cstdint>
#include <map>
#include <optional>

class PBImageBrowserView;

/// The browser for screen readers: a list of the heads of all leaves, each followed by the images
/// of its leaf unless that is folded. Children are made when they are asked for. Main thread.
class BrowserAccessible final : public QAccessibleWidget {
public:
    explicit BrowserAccessible(PBImageBrowserView& view);
    ~BrowserAccessible() override;

    /// Makes Qt use this class for browsers. Once for the process.
    static void install();
    /// Tell screen readers what has changed; nothing while none is running.
    static void currentDidChange(PBImageBrowserView& view);
    static void selectionDidChange(PBImageBrowserView& view);
    /// Other images are shown.
    static void contentDidChange(PBImageBrowserView& view);

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;

private:
    /// -1 for what is not in the list. The item `headItem` stands for the head.
    [[nodiscard]] int childIndexOf(std::int64_t group, std::int64_t item) const;
    struct Place {
        std::int64_t group;
        std::int64_t item;
    };
    [[nodiscard]] std::optional<Place> placeOf(int child) const;
    /// The head and the images of a leaf.
    [[nodiscard]] std::int64_t childrenOf(std::int64_t group) const;
    void forgetItems() const;

    PBImageBrowserView& _view;
    mutable std::map<int, QAccessible::Id> _items;
    mutable std::uint64_t _generation = 0; // of the content that the items belong to
};
