#include "ui/PBOutlineView.h"

#include "ui/PBThemes.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

bool isWindowCommand(const QKeyEvent& event) {
    return event.matches(QKeySequence::Copy) || event.matches(QKeySequence::Paste) ||
           event.matches(QKeySequence::SelectAll);
}

} // namespace

PBOutlineView::PBOutlineView(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setIndentation(14);
    setExpandsOnDoubleClick(true);
    updateColors();
}

bool PBOutlineView::hasKeyboard(const QWidget* view) {
    return view && view->hasFocus() && view->isActiveWindow();
}

bool PBOutlineView::event(QEvent* event) {
    // A shortcut that a widget claims never reaches the window's menu.
    if (event->type() == QEvent::ShortcutOverride &&
        isWindowCommand(*static_cast<QKeyEvent*>(event))) {
        event->ignore();
        return true;
    }
    return QTreeView::event(event);
}

void PBOutlineView::keyPressEvent(QKeyEvent* event) {
    if (isWindowCommand(*event)) {
        event->ignore();
    } else {
        QTreeView::keyPressEvent(event);
    }
}

QItemSelectionModel::SelectionFlags
PBOutlineView::selectionCommand(const QModelIndex& index, const QEvent* event) const {
    // A click beside the rows, or on a title among them, leaves the selection.
    if (event && !index.flags().testFlag(Qt::ItemIsSelectable)) {
        return QItemSelectionModel::NoUpdate;
    }
    return QTreeView::selectionCommand(index, event);
}

QModelIndex PBOutlineView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    QModelIndex index = QTreeView::moveCursor(action, modifiers);
    if (action != MoveUp && action != MoveDown) return index;
    while (index.isValid() && !index.flags().testFlag(Qt::ItemIsSelectable))
        index = action == MoveUp ? indexAbove(index) : indexBelow(index);
    return index.isValid() ? index : currentIndex();
}

void PBOutlineView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) {
    // A row that goes takes the selection with it; the base would move it to a neighbour.
    QModelIndex above = currentIndex();
    while (above.isValid() && above.parent() != parent)
        above = above.parent();
    if (above.isValid() && above.row() >= start && above.row() <= end) setCurrentIndex({});
    QTreeView::rowsAboutToBeRemoved(parent, start, end);
}

void PBOutlineView::mousePressEvent(QMouseEvent* event) {
    const QPoint place = event->position().toPoint();
    const QModelIndex index = indexAt(place);
    // A press on the arrow before the row opens it, and is meant for nothing else.
    const bool wasSelected =
        index.isValid() && selectionModel()->isSelected(index) && visualRect(index).contains(place);
    QTreeView::mousePressEvent(event);
    if (wasSelected) Q_EMIT selectedRowPressed(index);
}

void PBOutlineView::drawRow(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    if (selectionModel() && selectionModel()->isSelected(index)) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(
            hasKeyboard(this) ? PBThemes::colors().accent : QColor(128, 128, 128, 72));
        painter->drawRoundedRect(selectionRect(option.rect), 5, 5);
        painter->restore();
    }
    QTreeView::drawRow(painter, option, index);
}

void PBOutlineView::drawBranches(
    QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    if (!model()->hasChildren(index)) return;
    const PBThemes::Colors& colors = PBThemes::colors();
    const bool isOnAccent =
        hasKeyboard(this) && selectionModel() && selectionModel()->isSelected(index);
    const QPointF centre(rect.right() - indentation() / 2.0 + 2, rect.center().y() + 0.5);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(
        isOnAccent ? QColor(Qt::white) : colors.secondaryText, 1.4, Qt::SolidLine, Qt::RoundCap,
        Qt::RoundJoin));
    painter->translate(centre);
    if (isExpanded(index)) painter->rotate(90);
    painter->drawPolyline(QPolygonF({QPointF(-1.5, -3), QPointF(1.5, 0), QPointF(-1.5, 3)}));
    painter->restore();
}

void PBOutlineView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
    if (event->type() == QEvent::ActivationChange) viewport()->update();
}

void PBOutlineView::updateColors() {
    const PBThemes::Colors& colors = PBThemes::colors();
    QPalette changed = palette();
    if (changed.color(QPalette::Base) == colors.sidebar) return;
    changed.setColor(QPalette::Base, colors.sidebar);
    changed.setColor(QPalette::Text, colors.text);
    // Rows draw their own selection.
    changed.setColor(QPalette::Highlight, Qt::transparent);
    setPalette(changed);
}
