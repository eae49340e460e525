#include "info/RowsAccessible.h"

#include "info/InfoRowsView.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QPointer>

#include <memory>

namespace {

class RowAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    RowAccessible(InfoRowsView& view, int row) : _view(&view), _row(row) {}

    [[nodiscard]] int row() const { return _row; }

    bool isValid() const override { return _view && _row < static_cast<int>(_view->rows().size()); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(_view);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}
    QString text(QAccessible::Text kind) const override {
        return isValid() && kind == QAccessible::Name ? _view->rowText(_row) : QString();
    }
    QRect rect() const override {
        if (!isValid()) return {};
        const QRect row = _view->rowRect(_row);
        return {_view->mapToGlobal(row.topLeft()), row.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (!isValid()) return state;
        state.selectable = true;
        state.multiSelectable = true;
        state.focusable = true;
        state.selected = _view->isSelected(_row);
        state.focused = _view->hasFocus() && _view->currentRow() == _row;
        state.offscreen = !_view->visibleRegion().intersects(_view->rowRect(_row));
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (!isValid()) return;
        _view->setFocus();
        _view->selectRow(_row);
        if (name == pressAction()) _view->activateRow(_row);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    const QPointer<InfoRowsView> _view;
    const int _row;
};

QAccessibleInterface* makeAccessible(const QString& className, QObject* object) {
    // Asked for the class of the object and each one above it.
    if (className != QLatin1String(InfoRowsView::staticMetaObject.className())) return nullptr;
    auto* view = qobject_cast<InfoRowsView*>(object);
    return view ? std::make_unique<RowsAccessible>(*view).release() : nullptr; // Qt owns it
}

} // namespace

RowsAccessible::RowsAccessible(InfoRowsView& view)
    : QAccessibleWidget(&view, QAccessible::List), _view(view) {}

RowsAccessible::~RowsAccessible() {
    for (const auto& [row, id] : _rows)
        QAccessible::deleteAccessibleInterface(id);
}

void RowsAccessible::install() {
    platform::assertMainThread();
    [[maybe_unused]] static const bool done = (QAccessible::installFactory(makeAccessible), true);
}

int RowsAccessible::rowCount() const {
    return static_cast<int>(_view.rows().size());
}

int RowsAccessible::childCount() const {
    return rowCount() + QAccessibleWidget::childCount();
}

QAccessibleInterface* RowsAccessible::child(int index) const {
    if (index >= rowCount()) return QAccessibleWidget::child(index - rowCount());
    if (index < 0) return nullptr;
    const auto known = _rows.find(index);
    if (known != _rows.end()) return QAccessible::accessibleInterface(known->second);
    // Qt's registry owns it until it is told to delete it.
    RowAccessible* made = std::make_unique<RowAccessible>(_view, index).release();
    _rows[index] = QAccessible::registerAccessibleInterface(made);
    return made;
}

int RowsAccessible::indexOfChild(const QAccessibleInterface* child) const {
    if (const auto* row = dynamic_cast<const RowAccessible*>(child)) return row->row();
    const int index = QAccessibleWidget::indexOfChild(child);
    return index < 0 ? -1 : rowCount() + index;
}

QAccessibleInterface* RowsAccessible::childAt(int x, int y) const {
    if (QAccessibleInterface* control = QAccessibleWidget::childAt(x, y)) return control;
    const QPoint point = _view.mapFromGlobal(QPoint(x, y));
    return _view.rect().contains(point) ? child(_view.rowAt(point.y())) : nullptr;
}

QAccessibleInterface* RowsAccessible::focusChild() const {
    if (!_view.hasFocus()) return QAccessibleWidget::focusChild();
    return child(_view.currentRow());
}

QString RowsAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Name) return platform::localizedString(u"Information");
    return QAccessibleWidget::text(kind);
}

void RowsAccessible::rowsDidChange(InfoRowsView& view) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&view, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void RowsAccessible::currentDidChange(InfoRowsView& view) {
    if (!QAccessible::isActive() || view.currentRow() < 0) return;
    QAccessibleEvent event(&view, QAccessible::Focus);
    event.setChild(view.currentRow());
    QAccessible::updateAccessibility(&event);
}
