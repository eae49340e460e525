#pragma once

#include <QStyledItemDelegate>

/// Draws the rows of the group panel: symbol, name and the number of photographs in a badge.
class GroupItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// In points.
    static constexpr int rowHeight = 20;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    [[nodiscard]] QSize
    sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
