#include "viewer/bin/StripAccessible.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "viewer/bin/PBThumbnailView.h"

#include <QPointer>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// A photograph of the strip; pressed, it is shown.
class CellAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    CellAccessible(PBThumbnailView& view, int index) : _view(&view), _index(index) {}

    [[nodiscard]] int index() const { return _index; }

    bool isValid() const override { return _view && _view->bin().itemAt(_index); }
    QObject* object() const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(_view);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid()) return {};
        const QRect cell = _view->widgetRect(_index);
        return {_view->mapToGlobal(cell.topLeft()), cell.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid) return state;
        state.selectable = true;
        state.focusable = true;
        state.selected = _view->bin().focusIndex() == _index;
        state.focused = state.selected && _view->hasFocus();
        state.offscreen = !_view->widgetRect(_index).intersects(_view->rect());
        return state;
    }
    QString text(QAccessible::Text kind) const override {
        if (!isValid()) return {};
        if (kind == QAccessible::Name) return _view->bin().itemAt(_index)->fileName();
        if (kind != QAccessible::Description) return {};
        return localizedFormat(
            u"Accessible_Position",
            {static_cast<qint64>(_index) + 1, static_cast<qint64>(_view->bin().count())});
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override {
        if (!isValid()) return;
        if (name == setFocusAction()) _view->setFocus();
        _view->bin().goTo(_index);
    }

private:
    const QPointer<PBThumbnailView> _view;
    const int _index;
};

QAccessibleInterface* makeAccessible(const QString& className, QObject* object) {
    if (className != QLatin1String(PBThumbnailView::staticMetaObject.className())) return nullptr;
    auto* view = qobject_cast<PBThumbnailView*>(object);
    return view ? std::make_unique<StripAccessible>(*view).release() : nullptr; // Qt owns it
}

} // namespace

StripAccessible::StripAccessible(PBThumbnailView& view)
    : QAccessibleWidget(&view, QAccessible::List), _view(view) {}

StripAccessible::~StripAccessible() {
    forgetItems();
}

void StripAccessible::install() {
    platform::assertMainThread();
    [[maybe_unused]] static const bool done = (QAccessible::installFactory(makeAccessible), true);
}

void StripAccessible::forgetItems() const {
    for (const auto& [index, id] : _items)
        QAccessible::deleteAccessibleInterface(id);
    _items.clear();
}

int StripAccessible::childCount() const {
    return static_cast<int>(
        std::min<std::int64_t>(_view.bin().count(), std::numeric_limits<int>::max()));
}

QAccessibleInterface* StripAccessible::child(int index) const {
    const std::uint64_t generation = _view.contentGeneration();
    if (std::exchange(_generation, generation) != generation) forgetItems();
    const auto known = _items.find(index);
    if (known != _items.end()) return QAccessible::accessibleInterface(known->second);
    if (index < 0 || index >= childCount()) return nullptr;
    // Qt's registry owns it until it is told to delete it.
    QAccessibleInterface* cell = std::make_unique<CellAccessible>(_view, index).release();
    _items[index] = QAccessible::registerAccessibleInterface(cell);
    return cell;
}

int StripAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const auto* cell = dynamic_cast<const CellAccessible*>(child);
    return cell ? cell->index() : -1;
}

QAccessibleInterface* StripAccessible::childAt(int x, int y) const {
    return child(static_cast<int>(_view.indexAt(_view.mapFromGlobal(QPoint(x, y)))));
}

QAccessibleInterface* StripAccessible::focusChild() const {
    return _view.hasFocus() ? child(static_cast<int>(_view.bin().focusIndex())) : nullptr;
}

QString StripAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Name) return localizedString(u"Accessible_PhotoBin");
    return QAccessibleWidget::text(kind);
}

void StripAccessible::focusDidChange(PBThumbnailView& view) {
    if (!QAccessible::isActive() || view.bin().focusIndex() < 0 || !view.hasFocus()) return;
    QAccessibleEvent event(&view, QAccessible::Focus);
    event.setChild(static_cast<int>(view.bin().focusIndex()));
    QAccessible::updateAccessibility(&event);
}

void StripAccessible::contentDidChange(PBThumbnailView& view) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&view, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}
