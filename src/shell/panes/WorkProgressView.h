#pragma once

#include <QWidget>

class WorkProgress;

/// Shows the work in the background as a few small words, with a thin bar where it is known how
/// much there is. Empty while there is nothing to tell; it keeps its place then. Main thread.
class WorkProgressView final : public QWidget {
public:
    explicit WorkProgressView(QWidget* parent = nullptr);

    /// The progress outlives this widget.
    void setProgress(WorkProgress& progress);
    [[nodiscard]] const QString& text() const { return _text; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void show(const WorkProgress& progress);

    QString _text;
    double _part = -1; // done, 0 to 1; below 0 where it is not known
};
