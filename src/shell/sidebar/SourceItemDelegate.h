#pragma once

#include <QStyledItemDelegate>

/// Draws the rows of the sidebar: titles of categories, folder roots with their place below the
/// name, and folders.
class SourceItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    [[nodiscard]] QSize
    sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
