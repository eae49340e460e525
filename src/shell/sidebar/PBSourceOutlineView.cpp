#include "shell/sidebar/PBSourceOutlineView.h"

#include "shell/sidebar/SourceItemDelegate.h"
#include "shell/sidebar/SourceTreeModel.h"
#include "ui/PBThemes.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>

PBSourceOutlineView::PBSourceOutlineView(QWidget* parent) : PBOutlineView(parent) {
    setItemDelegate(new SourceItemDelegate(this));
    setUniformRowHeights(false);
}

void PBSourceOutlineView::mousePressEvent(QMouseEvent* event) {
    // The right button opens the menu of a row without selecting it.
    if (event->button() == Qt::RightButton) return event->accept();
    PBOutlineView::mousePressEvent(event);
}

void PBSourceOutlineView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid()) return;
    const QPoint position =
        isByKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos();
    Q_EMIT menuRequested(index, position);
}

void PBSourceOutlineView::drawRow(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    PBOutlineView::drawRow(painter, option, index);
    if (!index.data(SourceTreeModel::ContextRole).toBool()) return;
    const PBThemes::Colors& colors = PBThemes::colors();
    const bool isSelected = selectionModel() && selectionModel()->isSelected(index);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(isSelected ? colors.text : colors.accent, 1.5));
    painter->drawRoundedRect(selectionRect(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    painter->restore();
}
