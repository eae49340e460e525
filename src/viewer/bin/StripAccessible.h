#pragma once

#include <QAccessibleWidget>

#include <cstdint>
#include <map>

class PBThumbnailView;

/// The strip for screen readers: a list of its photographs. Children are made when they are asked
/// for. Main thread.
class StripAccessible final : public QAccessibleWidget {
public:
    explicit StripAccessible(PBThumbnailView& view);
    ~StripAccessible() override;

    /// Makes Qt use this class for strips. Once for the process.
    static void install();
    /// Tell screen readers what has changed; nothing while none is running.
    static void focusDidChange(PBThumbnailView& view);
    static void contentDidChange(PBThumbnailView& view);

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;

private:
    void forgetItems() const;

    PBThumbnailView& _view;
    mutable std::map<int, QAccessible::Id> _items;
    mutable std::uint64_t _generation = 0; ///< of the content that the items belong to
};
