#include "viewer/bin/StripAccessible.h"

#include "ui/PhotographText.h"
#include "viewer/bin/PBThumbnailView.h"

#include <algorithm>
#include <limits>

StripAccessible::StripAccessible(PBThumbnailView& view)
    : PaintedItemsAccessible(view, u"Accessible_PhotoBin"), _view(view) {}

int StripAccessible::itemCount() const {
    return static_cast<int>(
        std::min<std::int64_t>(_view.bin().count(), std::numeric_limits<int>::max()));
}

PaintedItemsAccessible::Item StripAccessible::item(int index) const {
    return {.rect = _view.widgetRect(index), .isSelected = currentItem() == index};
}

QString StripAccessible::itemText(int index, QAccessible::Text kind) const {
    const auto item = _view.bin().itemAt(index);
    if (kind == QAccessible::Name && item) return spokenName(*item);
    return kind == QAccessible::Description ? positionText(index, _view.bin().count()) : QString();
}

QStringList StripAccessible::itemActions(int) const {
    using Action = QAccessibleActionInterface;
    return {Action::pressAction(), Action::setFocusAction()};
}

void StripAccessible::perform(int index, const QString&) {
    _view.bin().goTo(index);
}

int StripAccessible::itemAt(const QPoint& point) const {
    return static_cast<int>(_view.indexAt(point));
}

int StripAccessible::currentItem() const {
    return static_cast<int>(_view.bin().focusIndex());
}

std::uint64_t StripAccessible::generation() const {
    return _view.contentGeneration();
}
