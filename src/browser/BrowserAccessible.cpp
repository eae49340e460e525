#include "browser/BrowserAccessible.h"

#include "browser/PBImageBrowserView.h"
#include "core/Texts.h"
#include "ui/PhotographText.h"

#include <algorithm>
#include <limits>

using Action = QAccessibleActionInterface;

namespace {

constexpr std::int64_t headItem = -1;

} // namespace

BrowserAccessible::BrowserAccessible(PBImageBrowserView& view)
    : PaintedItemsAccessible(view, u"Accessible_Browser"), _view(view) {}

std::int64_t BrowserAccessible::childrenOf(std::int64_t group) const {
    const BrowserLeafList& leaves = _view.leaves();
    return 1 + (leaves.isCollapsedForBrowser(group) ? 0 : leaves.imageFileCount(group));
}

int BrowserAccessible::itemCount() const {
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

std::shared_ptr<PBImageFileItem> BrowserAccessible::imageAt(const Place& place) const {
    return place.item == headItem ? nullptr : _view.leaves().imageFileAtIndex(place.index());
}

PaintedItemsAccessible::Item BrowserAccessible::item(int index) const {
    const auto place = placeOf(index);
    if (!place) return {};
    if (const auto image = imageAt(*place))
        return {.rect = _view.widgetRect(place->index()), .isSelected = image->isSelected()};
    return {
        .role = QAccessible::Heading, .rect = _view.headRect(place->group), .isSelectable = false};
}

QString BrowserAccessible::itemText(int index, QAccessible::Text kind) const {
    const auto place = placeOf(index);
    if (!place) return {};
    const auto image = imageAt(*place);
    if (kind == QAccessible::Name) return image ? spokenName(*image) : _view.headText(place->group);
    return image && kind == QAccessible::Description ? detailsOf(*place, *image) : QString();
}

QString BrowserAccessible::detailsOf(const Place& place, const PBImageFileItem& image) const {
    return QStringList{
        positionText(place.item, _view.leaves().imageFileCount(place.group)),
        _view.headText(place.group), imageSizeText(image.displaySize()),
        PBUtilities::stringWithFileSize(image.fileSize())}
        .join(QStringLiteral(", "));
}

QStringList BrowserAccessible::itemActions(int index) const {
    const auto place = placeOf(index);
    if (place && imageAt(*place))
        return {Action::pressAction(), Action::setFocusAction(), Action::toggleAction()};
    return {Action::pressAction()};
}

void BrowserAccessible::perform(int index, const QString& action) {
    const auto place = placeOf(index);
    if (!place) return;
    if (!imageAt(*place)) return _view.scrollToGroup(place->group);
    if (action == Action::pressAction()) _view.openIndex(place->index());
    if (action == Action::toggleAction()) _view.toggleIndex(place->index());
    if (action == Action::setFocusAction()) _view.GotoIndex(place->index());
}

int BrowserAccessible::itemAt(const QPoint& point) const {
    const std::int64_t head = _view.headAt(point);
    if (head >= 0) return childIndexOf(head, headItem);
    const PBImageBrowserIndex index = _view.indexAt(point);
    return index.isValid() ? childIndexOf(index.group, index.item) : -1;
}

int BrowserAccessible::currentItem() const {
    const PBImageBrowserIndex current = _view.currentIndex();
    return current.isValid() ? childIndexOf(current.group, current.item) : -1;
}

std::uint64_t BrowserAccessible::generation() const {
    return _view.contentGeneration();
}
