#include "browser/BrowserAccessible.h"

#include "browser/PBImageBrowserView.h"
#include "core/Texts.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainThread.h"

#include <QPointer>

#include <algorithm>
#include <limits>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// One image of the list.
class ItemAccessible final : public QAccessibleInterface {
public:
    ItemAccessible(PBImageBrowserView& view, const PBImageBrowserIndex& index, int childIndex)
        : _view(&view), _index(index), _childIndex(childIndex) {}

    [[nodiscard]] int childIndex() const { return _childIndex; }

    bool isValid() const override { return _view && item(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(_view);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QRect rect() const override {
        if (!isValid()) return {};
        const QRect cell = _view->widgetRect(_index);
        return {_view->mapToGlobal(cell.topLeft()), cell.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.selectable = true;
        state.multiSelectable = true;
        state.focusable = true;
        state.selected = item()->isSelected();
        state.focused = _view->hasFocus() && _view->currentIndex() == _index;
        state.offscreen = !_view->widgetRect(_index).intersects(_view->rect());
        return state;
    }

    QString text(QAccessible::Text kind) const override {
        if (!isValid()) return {};
        if (kind == QAccessible::Name) return name();
        if (kind != QAccessible::Description) return {};
        const auto count = _view->leaves().imageFileCount(_index.group);
        return QStringList{
            localizedFormat(u"Accessible_Position", {_index.item + 1, count}),
            _view->headText(_index.group), imageSizeText(item()->imageSize()),
            PBUtilities::stringWithFileSize(item()->fileSize())}
            .join(QStringLiteral(", "));
    }
    void setText(QAccessible::Text, const QString&) override {}

private:
    std::shared_ptr<PBImageFileItem> item() const {
        return _view->leaves().imageFileAtIndex(_index);
    }
    QString name() const {
        QStringList parts{item()->fileName()};
        const auto stars = static_cast<qint64>(item()->star());
        if (stars == 1) parts += localizedString(u"Accessible_Star");
        if (stars > 1) parts += localizedFormat(u"Accessible_Stars", {stars});
        if (item()->flagged()) parts += localizedString(u"Accessible_Flagged");
        if (item()->isAway()) parts += localizedString(u"Accessible_Away");
        return parts.join(QStringLiteral(", "));
    }

    const QPointer<PBImageBrowserView> _view;
    const PBImageBrowserIndex _index;
    const int _childIndex;
};

QAccessibleInterface* makeAccessible(const QString& className, QObject* object) {
    if (className != QLatin1String(PBImageBrowserView::staticMetaObject.className()))
        return nullptr;
    auto* view = qobject_cast<PBImageBrowserView*>(object);
    return view ? std::make_unique<BrowserAccessible>(*view).release() : nullptr; // Qt owns it
}

} // namespace

BrowserAccessible::BrowserAccessible(PBImageBrowserView& view)
    : QAccessibleWidget(&view, QAccessible::List), _view(view) {}

BrowserAccessible::~BrowserAccessible() {
    forgetItems();
}

void BrowserAccessible::install() {
    platform::assertMainThread();
    [[maybe_unused]] static const bool done = (QAccessible::installFactory(makeAccessible), true);
}

void BrowserAccessible::forgetItems() const {
    for (const auto& [index, id] : _items)
        QAccessible::deleteAccessibleInterface(id);
    _items.clear();
}

int BrowserAccessible::childCount() const {
    return static_cast<int>(std::min<std::int64_t>(
        _view.selection().itemCount(FoldedLeaves::Excluded), std::numeric_limits<int>::max()));
}

int BrowserAccessible::childIndexOf(const PBImageBrowserIndex& index) const {
    const BrowserLeafList& leaves = _view.leaves();
    if (!index.isValid() || index.group >= leaves.leafCount() ||
        leaves.isCollapsedForBrowser(index.group))
        return -1;
    std::int64_t before = 0;
    for (std::int64_t group = 0; group < index.group; ++group)
        if (!leaves.isCollapsedForBrowser(group)) before += leaves.imageFileCount(group);
    return static_cast<int>(before + index.item);
}

PBImageBrowserIndex BrowserAccessible::browserIndexOf(int child) const {
    const BrowserLeafList& leaves = _view.leaves();
    std::int64_t item = child;
    for (std::int64_t group = 0; item >= 0 && group < leaves.leafCount(); ++group) {
        if (leaves.isCollapsedForBrowser(group)) continue;
        const std::int64_t count = leaves.imageFileCount(group);
        if (item < count) return {group, item};
        item -= count;
    }
    return {};
}

QAccessibleInterface* BrowserAccessible::child(int index) const {
    const std::uint64_t generation = _view.contentGeneration();
    if (std::exchange(_generation, generation) != generation) forgetItems();
    const auto known = _items.find(index);
    if (known != _items.end()) return QAccessible::accessibleInterface(known->second);
    const PBImageBrowserIndex browserIndex = browserIndexOf(index);
    if (!browserIndex.isValid()) return nullptr;
    // Qt's registry owns it until it is told to delete it.
    auto* item = std::make_unique<ItemAccessible>(_view, browserIndex, index).release();
    _items[index] = QAccessible::registerAccessibleInterface(item);
    return item;
}

int BrowserAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const auto* item = dynamic_cast<const ItemAccessible*>(child);
    return item ? item->childIndex() : -1;
}

QAccessibleInterface* BrowserAccessible::childAt(int x, int y) const {
    const QPoint point = _view.mapFromGlobal(QPoint(x, y));
    return child(childIndexOf(_view.indexAt(point)));
}

QAccessibleInterface* BrowserAccessible::focusChild() const {
    return _view.hasFocus() ? child(childIndexOf(_view.currentIndex())) : nullptr;
}

QString BrowserAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Name) return localizedString(u"Accessible_Browser");
    return QAccessibleWidget::text(kind);
}

void BrowserAccessible::currentDidChange(PBImageBrowserView& view) {
    platform::assertMainThread();
    if (!QAccessible::isActive()) return;
    auto* self = dynamic_cast<BrowserAccessible*>(QAccessible::queryAccessibleInterface(&view));
    const int child = self ? self->childIndexOf(view.currentIndex()) : -1;
    if (child < 0) return;
    QAccessibleEvent event(&view, QAccessible::Focus);
    event.setChild(child);
    QAccessible::updateAccessibility(&event);
}

void BrowserAccessible::selectionDidChange(PBImageBrowserView& view) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&view, QAccessible::SelectionWithin);
    QAccessible::updateAccessibility(&event);
}

void BrowserAccessible::contentDidChange(PBImageBrowserView& view) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&view, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}
