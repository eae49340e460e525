#pragma once

#include "ui/PBOutlineView.h"

#include <QBasicTimer>

/// The outline of the group panel. Main thread.
class PBGroupOutlineView final : public PBOutlineView {
    Q_OBJECT

public:
    explicit PBGroupOutlineView(QWidget* parent = nullptr);

Q_SIGNALS:
    /// The visible part was moved, other than by rows that came or went.
    void outlineViewDidScroll();

protected:
    void updateGeometries() override;
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void reset() override;

private:
    [[nodiscard]] bool isEmpty() const;

    bool _isUpdatingGeometries = false;
    /// Runs while the outline is empty, but may be about to fill.
    QBasicTimer _hintTimer;
    bool _showsHint = true;
};
