#include "browser/BrowserAccessible.h"

#include "browser/PBImageBrowserView.h"
#include "core/Texts.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QPointer>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr std::int64_t headItem = -1;

/// A head or an image of the list.
class ChildAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ChildAccessible(PBImageBrowserView& view, int childIndex)
        : _view(&view), _childIndex(childIndex) {}

    [[nodiscard]] int childIndex() const { return _childIndex; }

    QObject* object() const override { return nullptr; }
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
        const QRect part = widgetRect();
        return {_view->mapToGlobal(part.topLeft()), part.size()};
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

protected:
    [[nodiscard]] virtual QRect widgetRect() const = 0;
    [[nodiscard]] bool isOffscreen() const { return !widgetRect().intersects(_view->rect()); }
    [[nodiscard]] PBImageBrowserView* view() const { return _view; }

private:
    const QPointer<PBImageBrowserView> _view;
    const int _childIndex;
};

/// The head of a leaf; pressed, it is scrolled to.
class HeadAccessible final : public ChildAccessible {
public:
    HeadAccessible(PBImageBrowserView& view, std::int64_t group, int childIndex)
        : ChildAccessible(view, childIndex), _group(group) {}

    bool isValid() const override { return view() && _group < view()->leaves().leafCount(); }
    QAccessible::Role role() const override { return QAccessible::Heading; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        state.offscreen = isValid() && isOffscreen();
        return state;
    }
    QString text(QAccessible::Text kind) const override {
        if (!isValid() || kind != QAccessible::Name) return {};
        return view()->headText(_group);
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override {
        if (isValid() && name == pressAction()) view()->scrollToGroup(_group);
    }

protected:
    QRect widgetRect() const override { return view()->headRect(_group); }

private:
    const std::int64_t _group;
};

/// An image: it can be made the current one, put into the selection or out of it, and opened.
class ItemAccessible final : public ChildAccessible {
public:
    ItemAccessible(PBImageBrowserView& view, const PBImageBrowserIndex& index, int childIndex)
        : ChildAccessible(view, childIndex), _index(index) {}

    bool isValid() const override { return view() && item(); }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QStringList actionNames() const override {
        return {pressAction(), setFocusAction(), toggleAction()};
    }
    void doAction(const QString& name) override {
        if (!isValid()) return;
        if (name == pressAction()) view()->openIndex(_index);
        if (name == toggleAction()) view()->toggleIndex(_index);
        if (name != setFocusAction()) return;
        view()->setFocus();
        view()->GotoIndex(_index);
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
        state.focused = view()->hasFocus() && view()->currentIndex() == _index;
        state.offscreen = isOffscreen();
        return state;
    }

    QString text(QAccessible::Text kind) const override {
        if (!isValid()) return {};
        if (kind == QAccessible::Name) return name();
        if (kind != QAccessible::Description) return {};
        const auto count = view()->leaves().imageFileCount(_index.group);
        return QStringList{
            localizedFormat(u"Accessible_Position", {_index.item + 1, count}),
            view()->headText(_index.group), imageSizeText(item()->displaySize()),
            PBUtilities::stringWithFileSize(item()->fileSize())}
            .join(QStringLiteral(", "));
    }

protected:
    QRect widgetRect() const override { return view()->widgetRect(_index); }

private:
    std::shared_ptr<PBImageFileItem> item() const {
        return view()->leaves().imageFileAtIndex(_index);
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

    const PBImageBrowserIndex _index;
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

std::int64_t BrowserAccessible::childrenOf(std::int64_t group) const {
    const BrowserLeafList& leaves = _view.leaves();
    return 1 + (leaves.isCollapsedForBrowser(group) ? 0 : leaves.imageFileCount(group));
}

int BrowserAccessible::childCount() const {
    std::int64_t count = 0;
    for (std::int64_t group = 0; group < _view.leaves().leafCount(); ++group)
        count += childrenOf(group);
    return static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max()));
}

int BrowserAccessible::childIndexOf(std::int64_t group, std::int64_t item) const {
    if (group < 0 || group >= _view.leaves().leafCount() || item < headItem ||
        item + 1 >= childrenOf(group))
        return -1;
    std::int64_t before = 0;
    for (std::int64_t each = 0; each < group; ++each)
        before += childrenOf(each);
    return static_cast<int>(before + 1 + item);
}

std::optional<BrowserAccessible::Place> BrowserAccessible::placeOf(int child) const {
    std::int64_t rest = child;
    for (std::int64_t group = 0; rest >= 0 && group < _view.leaves().leafCount(); ++group) {
        const std::int64_t count = childrenOf(group);
        if (rest < count) return Place{group, headItem + rest};
        rest -= count;
    }
    return std::nullopt;
}

QAccessibleInterface* BrowserAccessible::child(int index) const {
    const std::uint64_t generation = _view.contentGeneration();
    if (std::exchange(_generation, generation) != generation) forgetItems();
    const auto known = _items.find(index);
    if (known != _items.end()) return QAccessible::accessibleInterface(known->second);
    const auto place = placeOf(index);
    if (!place) return nullptr;
    std::unique_ptr<ChildAccessible> made;
    if (place->item == headItem) {
        made = std::make_unique<HeadAccessible>(_view, place->group, index);
    } else {
        made = std::make_unique<ItemAccessible>(
            _view, PBImageBrowserIndex{place->group, place->item}, index);
    }
    // Qt's registry owns it until it is told to delete it.
    ChildAccessible* child = made.release();
    _items[index] = QAccessible::registerAccessibleInterface(child);
    return child;
}

int BrowserAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const auto* item = dynamic_cast<const ChildAccessible*>(child);
    return item ? item->childIndex() : -1;
}

QAccessibleInterface* BrowserAccessible::childAt(int x, int y) const {
    const QPoint point = _view.mapFromGlobal(QPoint(x, y));
    const std::int64_t head = _view.headAt(point);
    if (head >= 0) return child(childIndexOf(head, headItem));
    const PBImageBrowserIndex index = _view.indexAt(point);
    return index.isValid() ? child(childIndexOf(index.group, index.item)) : nullptr;
}

QAccessibleInterface* BrowserAccessible::focusChild() const {
    const PBImageBrowserIndex current = _view.currentIndex();
    if (!_view.hasFocus() || !current.isValid()) return nullptr;
    return child(childIndexOf(current.group, current.item));
}

QString BrowserAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Name) return localizedString(u"Accessible_Browser");
    return QAccessibleWidget::text(kind);
}

void BrowserAccessible::currentDidChange(PBImageBrowserView& view) {
    platform::assertMainThread();
    if (!QAccessible::isActive()) return;
    auto* self = dynamic_cast<BrowserAccessible*>(QAccessible::queryAccessibleInterface(&view));
    const PBImageBrowserIndex current = view.currentIndex();
    const int child =
        self && current.isValid() ? self->childIndexOf(current.group, current.item) : -1;
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
