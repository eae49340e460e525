#include "viewer/slideshow/surfaces/RasterSurface.h"

#include "platform/tasks/Cores.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/transitions/RasterTransitions.h"

#include <QPainter>

#include <atomic>
#include <utility>

namespace {

/// More bands than that gain nothing: memory is the limit.
constexpr int mostBands = 8;

int bandCount() {
    return std::min(platform::usableCores(), mostBands);
}

} // namespace

/// One frame that is being painted: by several threads, each its own rows.
struct RasterSurface::Work {
    TransitionFrame frame;
    QImage image;
    RasterTransitions::Target target;
    std::atomic<int> bandsLeft = 0;
};

RasterSurface::RasterSurface(QWidget* parent)
    : QWidget(parent), _queue(QStringLiteral("transitions"), bandCount()) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

RasterSurface::~RasterSurface() = default;

void RasterSurface::showFrame(const TransitionFrame& frame) {
    platform::assertMainThread();
    if (frame.progress <= 0 || frame.progress >= 1) {
        _next.reset();
        _work.reset(); // what it comes to is no longer wanted
        show(frame.progress >= 1 ? frame.to : frame.from);
    } else if (_work) {
        _next = frame;
    } else {
        begin(frame);
    }
}

void RasterSurface::begin(const TransitionFrame& frame) {
    auto work = std::make_shared<Work>();
    work->frame = frame;
    work->image = std::exchange(_spare, {});
    const QSize size = frame.from.size();
    if (work->image.size() != size || !work->image.isDetached())
        work->image = QImage(size, QImage::Format_RGB32);
    if (work->image.isNull()) return; // no memory: this frame is left out
    work->target = RasterTransitions::targetOf(work->image);
    const int bands = bandCount();
    work->bandsLeft = bands;
    _work = work;
    for (int band = 0; band < bands; ++band) {
        const int first = size.height() * band / bands;
        const int end = size.height() * (band + 1) / bands;
        _queue.addOperation([this, work, first, end, alive = std::weak_ptr(_alive)] {
            RasterTransitions::paintRows(work->frame, work->target, first, end);
            if (--work->bandsLeft > 0) return;
            platform::MainLoop::instance()->post(
                platform::MainLoop::Mode::Common, [this, work, alive] {
                    if (alive.lock() && _work == work) finish(*work);
                });
        });
    }
}

void RasterSurface::finish(Work& work) {
    const QImage image = std::exchange(work.image, {});
    _work.reset();
    // The threads go on with the next frame while this one is painted.
    if (const auto next = std::exchange(_next, std::nullopt)) begin(*next);
    show(image);
}

void RasterSurface::show(const QImage& image) {
    _spare = std::exchange(_shown, image);
    update();
    ++_frameCount;
}

void RasterSurface::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (_shown.isNull()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    // Both are whole device pixels unless the window has just changed its size.
    painter.drawImage(QRectF(rect()), _shown, QRectF(_shown.rect()));
}
