#pragma once

#include "ui/PaintedItemsAccessible.h"

class PBThumbnailView;

/// The strip for screen readers: a list of its photographs. Main thread.
class StripAccessible final : public PaintedItemsAccessible {
public:
    explicit StripAccessible(PBThumbnailView& view);

protected:
    [[nodiscard]] int itemCount() const override;
    [[nodiscard]] Item item(int index) const override;
    [[nodiscard]] QString itemText(int index, QAccessible::Text kind) const override;
    [[nodiscard]] QStringList itemActions(int index) const override;
    /// Pressed, a photograph is shown.
    void perform(int index, const QString& action) override;
    [[nodiscard]] int itemAt(const QPoint& point) const override;
    [[nodiscard]] int currentItem() const override;
    [[nodiscard]] std::uint64_t generation() const override;

private:
    PBThumbnailView& _view;
};
