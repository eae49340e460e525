#pragma once

#include "image/PBImageBrowserIndex.h"

#include <QAccessibleWidget>

#include <cstdint>
#include <map>

class PBImageBrowserView;

/// The browser for screen readers: a list of all images of the shown leaves, in order. Items are
/// made when they are asked for. Main thread.
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
    [[nodiscard]] int childIndexOf(const PBImageBrowserIndex& index) const;
    [[nodiscard]] PBImageBrowserIndex browserIndexOf(int child) const;
    void forgetItems() const;

    PBImageBrowserView& _view;
    mutable std::map<int, QAccessible::Id> _items;
    mutable std::uint64_t _generation = 0; // of the content that the items belong to
};
