#pragma once

#include <QObject>

#include <functional>

class QWidget;

/// Looks at a widget after each of its paints, for `--stats`. Main thread.
class PaintWatch final : public QObject {
    Q_OBJECT

public:
    /// The widget outlives this object. `look` is called until it answers that it has seen enough.
    PaintWatch(QWidget& widget, std::function<bool()> look);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QWidget& _widget;
    std::function<bool()> _look; // empty: has seen enough
};
