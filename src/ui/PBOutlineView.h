#pragma once

#include <QTreeView>

/// Base of the window's outlines: their look, and what they leave to the window. Copy, paste and
/// select all are no commands of theirs: they go to the window, also while the outline has the
/// focus. Rows say what is drawn by their delegate; this draws the selection behind them. Main
/// thread.
class PBOutlineView : public QTreeView {
    Q_OBJECT

public:
    explicit PBOutlineView(QWidget* parent = nullptr);

    /// Whether a selection is shown strong: with two outlines one above the other it tells to which
    /// of them the keyboard goes. Delegates ask it of the view that they draw for.
    [[nodiscard]] static bool hasKeyboard(const QWidget* view);

Q_SIGNALS:
    /// The mouse was pressed on a row that was selected already.
    void selectedRowPressed(const QModelIndex& index);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    void
    drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    [[nodiscard]] QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    [[nodiscard]] QModelIndex
    moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;

    /// Where the selection of a row is drawn.
    [[nodiscard]] static QRectF selectionRect(const QRect& row) {
        return QRectF(row).adjusted(4.5, 0.5, -4.5, -0.5);
    }

private:
    void updateColors();
};
