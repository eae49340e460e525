#pragma once

#include <QToolButton>

#include <vector>

/// A button of the toolbar, flat on the bar with a hair line around it. It shows its action: icon,
/// tool tip, state and menu. Main thread.
class ToolbarButton final : public QToolButton {
public:
    /// Which end of a row of joined buttons it is.
    enum class Place { Only, First, Middle, Last };

    /// The action outlives the button or takes itself away.
    explicit ToolbarButton(QAction* action, QWidget* parent = nullptr);

    void setPlace(Place place);
    /// Pressing it shows the action's menu.
    void setMenuButton();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] bool hasArrow() const;
    [[nodiscard]] QPainterPath outline() const;
    [[nodiscard]] QColor fillColor() const;

    Place _place = Place::Only;
};

/// Buttons joined into one: each is a segment, from left to right.
class SegmentedControl final : public QWidget {
public:
    explicit SegmentedControl(const std::vector<QAction*>& segments, QWidget* parent = nullptr);
};
