#pragma once

#include <QTreeView>

/// Base of the window's outlines. Copy, paste and select all are no commands of theirs: they go to
/// the window, also while the outline has the focus.
class PBOutlineView : public QTreeView {
    Q_OBJECT

public:
    explicit PBOutlineView(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    [[nodiscard]] QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    [[nodiscard]] QModelIndex
    moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    bool event(QEvent* event) override;
};

/// The sidebar's outline.
class PBSourceOutlineView final : public PBOutlineView {
    Q_OBJECT

public:
    explicit PBSourceOutlineView(QWidget* parent = nullptr);

Q_SIGNALS:
    /// A menu is wanted for the row; `position` is on the screen.
    void menuRequested(const QModelIndex& index, const QPoint& position);
    /// The mouse was pressed on a row that was selected already.
    void selectedRowPressed(const QModelIndex& index);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    void
    drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    void changeEvent(QEvent* event) override;

private:
    void updateColors();
};
