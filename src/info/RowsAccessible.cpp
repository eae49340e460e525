#include "info/RowsAccessible.h"

#include "info/InfoRowsView.h"

using Action = QAccessibleActionInterface;

RowsAccessible::RowsAccessible(InfoRowsView& view)
    : PaintedItemsAccessible(view, u"Information"), _view(view) {}

int RowsAccessible::itemCount() const {
    return static_cast<int>(_view.rows().size());
}

PaintedItemsAccessible::Item RowsAccessible::item(int row) const {
    return {.rect = _view.rowRect(row), .isSelected = _view.isSelected(row)};
}

QString RowsAccessible::itemText(int row, QAccessible::Text kind) const {
    if (kind == QAccessible::Name) return _view.rowText(row);
    return kind == QAccessible::Description ? positionText(row, itemCount()) : QString();
}

QStringList RowsAccessible::itemActions(int) const {
    return {Action::pressAction(), Action::setFocusAction()};
}

void RowsAccessible::perform(int row, const QString& action) {
    _view.setFocus();
    _view.selectRow(row);
    if (action == Action::pressAction()) _view.activateRow(row);
}

int RowsAccessible::itemAt(const QPoint& point) const {
    return _view.rowAt(point.y());
}

int RowsAccessible::currentItem() const {
    return _view.currentRow();
}

std::uint64_t RowsAccessible::generation() const {
    return _view.listGeneration();
}
