#pragma once

#include "core/PBGroupTypeArray.h"
#include "ui/PBPathCell.h"

#include <QPointer>
#include <QWidget>

class QMenu;

/// The breadcrumb of group types above the browser: each step is a menu by which the user changes
/// the chain, and a last one without a title adds to it. The keyboard reaches it by Tab. Main
/// thread.
class PBPathControl final : public QWidget {
    Q_OBJECT

public:
    explicit PBPathControl(QWidget* parent = nullptr);

    [[nodiscard]] const PBGroupTypeArray& groupTypeArray() const { return _groupTypeArray; }
    /// Shows the chain. The very same array changes nothing.
    void setGroupTypeArray(PBGroupTypeArray groupTypeArray);
    /// Takes a widget in at the bar's end: as wide as it likes where that leaves the steps most of
    /// the bar, else at its least.
    void setTrailingWidget(QWidget* widget);
    [[nodiscard]] const PBPathCell& pathCell() const { return _pathCell; }

    /// The menu of the step under the mouse, for a press of the left button; nullptr otherwise, and
    /// without a chain. The caller shows it; it deletes itself when it closes.
    [[nodiscard]] QMenu* menuForEvent(const QMouseEvent& event);
    /// Opens the menu of a step below it.
    void popUpMenuOfItem(std::size_t index);
    /// Where a step lies in this widget.
    [[nodiscard]] QRectF rectOfItem(std::size_t index) const;

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// The user chose an entry of a step's menu.
    void groupMenuClicked(const PBGroupMenuAction& action);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] std::optional<std::size_t> itemAt(const QPointF& point) const;
    [[nodiscard]] QMenu* menuOfItem(std::size_t index);
    [[nodiscard]] QRectF highlightOfItem(std::size_t index) const;
    [[nodiscard]] QString toolTipOfItem(std::size_t index) const;
    void placeContents();
    void setHotItem(std::optional<std::size_t> index);
    void popUp(QMenu& menu);

    PBGroupTypeArray _groupTypeArray;
    PathCellStyle _style;
    PBPathCell _pathCell;
    std::optional<std::size_t> _hotItem;  ///< under the mouse
    std::optional<std::size_t> _openItem; ///< whose menu is open
    std::size_t _focusItem = 0;
    QPointer<QWidget> _trailing;
};
