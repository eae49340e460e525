#include "ui/PaintedItemsAccessible.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <utility>

void (*PaintedItemsAccessible::listener)(QAccessibleEvent& event) = nullptr;

/// An item that was handed out. The list deletes it before it goes itself.
class PaintedItemsAccessible::Child final : public QAccessibleInterface,
                                            public QAccessibleActionInterface {
public:
    Child(PaintedItemsAccessible& list, int index)
        : _list(list), _index(index), _generation(list.generation()) {}

    [[nodiscard]] int index() const { return _index; }

    bool isValid() const override {
        return _generation == _list.generation() && _index < _list.itemCount();
    }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return &_list; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override {
        return isValid() ? _list.item(_index).role : QAccessible::ListItem;
    }
    void setText(QAccessible::Text, const QString&) override {}
    QString text(QAccessible::Text kind) const override {
        return isValid() ? _list.itemText(_index, kind) : QString();
    }
    QRect rect() const override {
        if (!isValid()) return {};
        const QRect rect = _list.item(_index).rect;
        return {_list.view().mapToGlobal(rect.topLeft()), rect.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid) return state;
        const Item item = _list.item(_index);
        state.selectable = item.isSelectable;
        state.focusable = item.isSelectable;
        state.selected = item.isSelected;
        state.focused = _list.view().hasFocus() && _list.currentItem() == _index;
        state.offscreen = !_list.view().visibleRegion().intersects(item.rect);
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        return isValid() ? _list.itemActions(_index) : QStringList();
    }
    void doAction(const QString& name) override {
        if (!actionNames().contains(name)) return;
        if (name == setFocusAction()) _list.view().setFocus();
        _list.perform(_index, name);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    PaintedItemsAccessible& _list;
    const int _index;
    const std::uint64_t _generation;
};

PaintedItemsAccessible::PaintedItemsAccessible(QWidget& view, QStringView nameKey)
    : QAccessibleWidget(&view, QAccessible::List), _name(platform::localizedString(nameKey)) {}

PaintedItemsAccessible::~PaintedItemsAccessible() {
    forgetItems();
}

void PaintedItemsAccessible::forgetItems() const {
    for (const auto& [index, id] : std::exchange(_items, {}))
        QAccessible::deleteAccessibleInterface(id);
}

QWidgetList PaintedItemsAccessible::controls() const {
    QWidgetList found = view().findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    found.removeIf(
        [](const QWidget* each) { return each->isWindow() || each->focusPolicy() == Qt::NoFocus; });
    return found;
}

int PaintedItemsAccessible::childCount() const {
    return itemCount() + static_cast<int>(controls().size());
}

QAccessibleInterface* PaintedItemsAccessible::child(int index) const {
    const int count = itemCount();
    if (index >= count)
        return QAccessible::queryAccessibleInterface(controls().value(index - count));
    if (index < 0) return nullptr;
    if (std::exchange(_itemsGeneration, generation()) != generation()) forgetItems();
    const auto known = _items.find(index);
    if (known != _items.end()) return QAccessible::accessibleInterface(known->second);
    auto& list = const_cast<PaintedItemsAccessible&>(*this); // Qt asks for children of a const list
    // Qt's registry owns it until it is told to delete it.
    QAccessibleInterface* made = std::make_unique<Child>(list, index).release();
    _items[index] = QAccessible::registerAccessibleInterface(made);
    return made;
}

int PaintedItemsAccessible::indexOfChild(const QAccessibleInterface* child) const {
    if (const auto* item = dynamic_cast<const Child*>(child)) return item->index();
    const qsizetype index =
        child ? controls().indexOf(qobject_cast<QWidget*>(child->object())) : -1;
    return index < 0 ? -1 : itemCount() + static_cast<int>(index);
}

QAccessibleInterface* PaintedItemsAccessible::childAt(int x, int y) const {
    const QPoint point = view().mapFromGlobal(QPoint(x, y));
    for (QWidget* control : controls())
        if (control->isVisible() && control->geometry().contains(point))
            return QAccessible::queryAccessibleInterface(control);
    return view().rect().contains(point) ? child(itemAt(point)) : nullptr;
}

QAccessibleInterface* PaintedItemsAccessible::focusChild() const {
    return view().hasFocus() ? child(currentItem()) : QAccessibleWidget::focusChild();
}

QString PaintedItemsAccessible::text(QAccessible::Text kind) const {
    return kind == QAccessible::Name ? _name : QAccessibleWidget::text(kind);
}

QString PaintedItemsAccessible::positionText(std::int64_t index, std::int64_t count) {
    return platform::localizedFormat(
        u"Accessible_Position", {static_cast<qint64>(index) + 1, static_cast<qint64>(count)});
}

bool PaintedItemsAccessible::isListening() {
    return listener || QAccessible::isActive();
}

void PaintedItemsAccessible::tell(QAccessibleEvent& event) {
    if (listener) return listener(event);
    QAccessible::updateAccessibility(&event);
}

void PaintedItemsAccessible::currentDidChange(QWidget& view) {
    platform::assertMainThread();
    if (!isListening() || !view.hasFocus()) return;
    const auto* list =
        dynamic_cast<PaintedItemsAccessible*>(QAccessible::queryAccessibleInterface(&view));
    const int current = list ? list->currentItem() : -1;
    if (current < 0) return;
    QAccessibleEvent event(&view, QAccessible::Focus);
    event.setChild(current);
    tell(event);
}

void PaintedItemsAccessible::selectionDidChange(QWidget& view) {
    if (!isListening()) return;
    QAccessibleEvent event(&view, QAccessible::SelectionWithin);
    tell(event);
}

void PaintedItemsAccessible::itemsDidChange(QWidget& view) {
    if (!isListening()) return;
    QAccessibleEvent event(&view, QAccessible::ObjectReorder);
    tell(event);
}
