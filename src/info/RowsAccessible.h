#pragma once

#include "ui/PaintedItemsAccessible.h"

class InfoRowsView;

/// A page of rows for screen readers: a list of them, with the controls behind. Main thread.
class RowsAccessible final : public PaintedItemsAccessible {
public:
    explicit RowsAccessible(InfoRowsView& view);

protected:
    [[nodiscard]] int itemCount() const override;
    [[nodiscard]] Item item(int row) const override;
    [[nodiscard]] QString itemText(int row, QAccessible::Text kind) const override;
    [[nodiscard]] QStringList itemActions(int row) const override;
    void perform(int row, const QString& action) override;
    [[nodiscard]] int itemAt(const QPoint& point) const override;
    [[nodiscard]] int currentItem() const override;
    [[nodiscard]] std::uint64_t generation() const override;

private:
    InfoRowsView& _view;
};
