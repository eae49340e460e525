#pragma once

#include "info/painting/RowPainter.h"
#include "info/rows/InfoRow.h"

#include <QWidget>

#include <cstdint>
#include <set>

class QMenu;

/// A page of rows, as the document of a scroll view. Rows can be selected with mouse and keys, and
/// copied: one by its value, several with their labels. Main thread.
class InfoRowsView : public QWidget {
    Q_OBJECT

public:
    explicit InfoRowsView(QWidget* parent = nullptr);

    [[nodiscard]] const InfoRows& rows() const { return _rows; }
    /// The row that keys start from; -1 for none.
    [[nodiscard]] int currentRow() const { return _current; }
    [[nodiscard]] bool isSelected(int row) const { return _selected.contains(row); }
    /// Makes it the only one that is selected; -1 for none.
    void selectRow(int row);
    /// In this widget.
    [[nodiscard]] QRect rowRect(int row) const;
    /// The row at a height of this widget; -1 for none.
    [[nodiscard]] int rowAt(int y) const;
    /// "Label: value".
    [[nodiscard]] QString rowText(int row) const;
    /// What `copy` brings to the clipboard.
    [[nodiscard]] QString textOfSelection(bool withLabels) const;
    /// Another number each time that the rows are about other things.
    [[nodiscard]] std::uint64_t listGeneration() const { return _listGeneration; }
    /// The one text that is shown without rows.
    [[nodiscard]] const QString& emptyText() const { return _emptyText; }
    /// The user wants something done with the row: Return, or F2.
    virtual void activateRow(int row);

Q_SIGNALS:
    /// A part of this widget that should come into sight.
    void visibilityWanted(const QRect& rect);

protected:
    /// The page is as high as so many rows, and by so many points higher.
    void setRows(InfoRows rows, int heightInRows, int furtherHeight);
    void setFurtherHeight(int points);
    void setEmptyText(const QString& text);
    [[nodiscard]] const RowPainter& rowPainter() const { return _painter; }
    /// Behind the rows.
    virtual void paintControls(QPainter&) {}
    /// A press of the left button at this point begins something else.
    [[nodiscard]] virtual bool takesPress(const QPoint&) { return false; }
    virtual void addActions(QMenu&, int) {}
    /// The font, and with it where rows lie, is another one.
    virtual void metricsDidChange() {}
    /// That of the rows, and of what is kept free below them.
    [[nodiscard]] int contentHeight() const;

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] int rowCount() const { return static_cast<int>(_rows.size()); }
    /// By -1 for a key that moves nothing.
    [[nodiscard]] int rowOfKey(int key) const;
    [[nodiscard]] bool isOwnKey(const QKeyEvent& event) const;
    void moveTo(int row, Qt::KeyboardModifiers modifiers);
    void selectAll();
    void selectionDidChange();
    void copy(bool withLabels) const;
    void updateHeight();
    bool showToolTip(const QPoint& point, const QPoint& globalPoint);

    RowPainter _painter;
    InfoRows _rows;
    QString _emptyText;
    int _heightInRows = 0;
    int _furtherHeight = 0;
    std::set<int> _selected;
    int _current = -1;
    int _anchor = -1;
    std::uint64_t _listGeneration = 0;
};
