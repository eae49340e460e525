#pragma once

#include <QBasicTimer>
#include <QWidget>

/// A wheel that turns while something is waited for. It shows only when that takes long enough to
/// be noticed. Main thread.
class ProgressSpinner final : public QWidget {
    Q_OBJECT

public:
    explicit ProgressSpinner(QWidget* parent);

    void start();
    void stop();
    /// Between `start` and `stop`, seen or not.
    [[nodiscard]] bool isStarted() const { return _isStarted; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QBasicTimer _timer;
    bool _isStarted = false;
    int _step = 0;
};
