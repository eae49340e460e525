#include "shell/groups/PBGroupOutlineView.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/groups/GroupItemDelegate.h"
#include "ui/PBThemes.h"

#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTimerEvent>

namespace {

/// Each scan empties the outline for an instant.
constexpr int hintDelay = 600; // milliseconds
constexpr int hintMargin = 18; // points

} // namespace

PBGroupOutlineView::PBGroupOutlineView(QWidget* parent) : PBOutlineView(parent) {
    setItemDelegate(new GroupItemDelegate(this));
    setUniformRowHeights(true);
    setAccessibleName(platform::localizedString(u"Groups"));
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        if (!_isUpdatingGeometries) Q_EMIT outlineViewDidScroll();
    });
}

void PBGroupOutlineView::updateGeometries() {
    const QScopedValueRollback updating(_isUpdatingGeometries, true);
    PBOutlineView::updateGeometries();
}

bool PBGroupOutlineView::isEmpty() const {
    return !model() || !model()->hasChildren(rootIndex());
}

void PBGroupOutlineView::reset() {
    PBOutlineView::reset();
    _showsHint = false;
    _hintTimer.start(hintDelay, this);
}

void PBGroupOutlineView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _hintTimer.timerId()) return PBOutlineView::timerEvent(event);
    _hintTimer.stop();
    _showsHint = true;
    if (isEmpty()) viewport()->update();
}

void PBGroupOutlineView::paintEvent(QPaintEvent* event) {
    PBOutlineView::paintEvent(event);
    if (!_showsHint || !isEmpty()) return;
    QPainter painter(viewport());
    painter.setPen(PBThemes::colors().secondaryText);
    const QRect place =
        viewport()->rect().adjusted(hintMargin, hintMargin, -hintMargin, -hintMargin);
    painter.drawText(
        place, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
        platform::localizedString(u"NoGroups"));
}
