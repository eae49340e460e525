#pragma once

#include <QSplitter>

/// A split view of two panes, one of which keeps its size while the other absorbs a change of the
/// window's. The divider is a hair line that can be taken hold of a few points to either side.
class PBSplitView final : public QSplitter {
public:
    /// Limits of the pane that keeps its size, in points.
    struct Limits {
        int minimum = 0;
        int maximum = QWIDGETSIZE_MAX;
    };

    explicit PBSplitView(Qt::Orientation orientation, QWidget* parent = nullptr);

    /// Takes both panes in; `fixed` is 0 or 1, the index of the pane that keeps its size.
    void setPanes(QWidget* first, QWidget* second, int fixed, Limits limits);

    /// Size of the pane that keeps its size, along the split; 0 when it is collapsed.
    [[nodiscard]] int fixedPaneSize() const;
    /// Held within the limits; 0 collapses the pane.
    void setFixedPaneSize(int size);
    [[nodiscard]] bool isPaneCollapsed(int index) const;

protected:
    QSplitterHandle* createHandle() override;

private:
    int _fixed = 0;
    Limits _limits;
};
