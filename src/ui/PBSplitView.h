#pragma once

#include <QSplitter>
#include <QVariantAnimation>

#include <functional>

/// A split view of two panes, one of which keeps its size while the other absorbs a change of the
/// window's. The divider is a hair line that can be taken hold of a few points to either side; it
/// isn't drawn while a pane is collapsed. Sizes and positions are points along the split; the
/// position is where the divider stands, the size of the first pane. Main thread.
class PBSplitView final : public QSplitter {
    Q_OBJECT

public:
    struct Limits {
        int minimum = 0;
        int maximum = QWIDGETSIZE_MAX;
    };

    explicit PBSplitView(Qt::Orientation orientation, QWidget* parent = nullptr);

    /// Takes both panes in. `fixed` is 0 or 1, the index of the pane that keeps its size, within
    /// `limits`, and may collapse; the other one has at least `otherMinimum`, or with 0 what its
    /// content needs.
    void setPanes(QWidget* first, QWidget* second, int fixed, Limits limits, int otherMinimum);

    /// While the view is resized, the other pane keeps this much, as long as the pane that keeps
    /// its size can give way: that one gets smaller, down to its least, and as large again as it
    /// was asked to be when there is room. 0, as at first, for a pane that doesn't give way.
    void setRoomKept(int size) { _roomKept = size; }

    /// Size of the pane that keeps its size; 0 when it is collapsed.
    [[nodiscard]] int fixedPaneSize() const;
    /// The size that was last asked for, by the user or in code, though the pane gives way or is
    /// collapsed.
    [[nodiscard]] int askedPaneSize() const { return _asked; }
    /// Held within the limits; 0 collapses the pane.
    void setFixedPaneSize(int size);
    [[nodiscard]] bool isPaneCollapsed(int index) const;

    [[nodiscard]] int splitPosition() const { return sizes().value(0); }
    /// Both panes together, without the divider.
    [[nodiscard]] int length() const;
    /// At the ends the pane there collapses, which must be allowed.
    void setSplitPosition(int position);
    /// Moves the divider there, past all limits on the way, and calls back when it has arrived. In
    /// a view that isn't visible, or where the desktop wants no motion, that is at once.
    void animateToPosition(int position, std::function<void()> completion);
    [[nodiscard]] bool isAnimationRunning() const {
        return _animation.state() == QAbstractAnimation::Running;
    }

Q_SIGNALS:
    /// The divider moved, or the view was resized.
    void splitViewDidResizeSubviews();
    /// The user let go of the divider.
    void dividerReleased();

protected:
    QSplitterHandle* createHandle() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setMinimums(int first, int second);
    void finishAnimation();
    /// Moves the divider, which is nobody's wish.
    void place(int position);
    /// Takes what the divider at that position gives the pane for what is asked for.
    void noteAsked(int position);
    void giveWay();

    int _fixed = 0;
    Limits _limits;
    int _otherMinimum = 0;
    int _roomKept = 0;
    int _asked = 0;
    QVariantAnimation _animation;
    std::function<void()> _completion;
};
