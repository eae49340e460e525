#pragma once

#include "ui/PBOutlineView.h"

/// The sidebar's outline.
class PBSourceOutlineView final : public PBOutlineView {
    Q_OBJECT

public:
    explicit PBSourceOutlineView(QWidget* parent = nullptr);

Q_SIGNALS:
    /// A menu is wanted for the row; `position` is on the screen.
    void menuRequested(const QModelIndex& index, const QPoint& position);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
};
