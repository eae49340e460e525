#pragma once

#include <QToolButton>

#include <vector>

/// A button of the toolbar, flat on the bar with a hair line around it. It shows its action: icon,
/// tool tip and state. Main thread.
class ToolbarButton final : public QToolButton {
public:
    /// Which end of a row of joined buttons it is.
    enum class Place { Only, First, Middle, Last };

    /// The action outlives the button or takes itself away.
    explicit ToolbarButton(QAction* action, QWidget* parent = nullptr);

    void setPlace(Place place);
    /// Has an arrow that says that a menu will open.
    void setHasArrow();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QPainterPath outline() const;
    [[nodiscard]] QColor fillColor() const;

    Place _place = Place::Only;
    bool _hasArrow = false;
};

/// Buttons joined into one: each is a segment, from left to right.
class SegmentedControl final : public QWidget {
public:
    explicit SegmentedControl(const std::vector<QAction*>& segments, QWidget* parent = nullptr);
};
