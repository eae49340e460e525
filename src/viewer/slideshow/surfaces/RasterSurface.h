#pragma once

#include "platform/tasks/OperationQueue.h"
#include "viewer/slideshow/surfaces/TransitionSurface.h"

#include <QWidget>

#include <cstdint>
#include <memory>
#include <optional>

/// Frames that are painted beside the main thread, a band of rows on each core. Main thread.
class RasterSurface final : public QWidget, public TransitionSurface {
    Q_OBJECT

public:
    explicit RasterSurface(QWidget* parent);
    ~RasterSurface() override;

    [[nodiscard]] QWidget& widget() override { return *this; }
    void showFrame(const TransitionFrame& frame) override;

    /// Frames that were made ready for painting so far.
    [[nodiscard]] int frameCount() const { return _frameCount; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Work;

    void begin(const TransitionFrame& frame);
    void finish(Work& work);
    void show(const QImage& image);

    QImage _shown;
    int _frameCount = 0;
    /// Memory for the next frame: that of one which is no longer shown.
    QImage _spare;
    std::shared_ptr<Work> _work; // nullptr: nothing is being painted
    std::optional<TransitionFrame> _next;
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<RasterSurface*> _alive = std::make_shared<RasterSurface*>(this);
    platform::OperationQueue _queue;
};
