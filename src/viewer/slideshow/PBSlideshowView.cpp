#include "viewer/slideshow/PBSlideshowView.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/surfaces/TransitionEngine.h"
#include "viewer/slideshow/surfaces/TransitionSurface.h"
#include "viewer/slideshow/transitions/PlainPicture.h"

#include <QResizeEvent>
#include <QScreen>

#include <utility>

namespace {

/// Slow at both ends.
double eased(double part) {
    return part * part * (3 - 2 * part);
}

} // namespace

PBSlideshowView::PBSlideshowView(const TransitionEngine& engine, QWidget* parent)
    : QWidget(parent), _surface(makeTransitionSurface(engine, this)),
      _queue(QStringLiteral("slideshow")) {
    _ticks.setTimerType(Qt::PreciseTimer);
    connect(&_ticks, &QTimer::timeout, this, &PBSlideshowView::showNow);
}

PBSlideshowView::~PBSlideshowView() = default;

QSize PBSlideshowView::pixelSize() const {
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void PBSlideshowView::transitionToImage(const QImage& image, double angle) {
    platform::assertMainThread();
    // A picture that never came to be shown is left out.
    const bool wasShown = !_isRunning || _clock.isValid();
    if (_isRunning) finish(false);
    if (image.isNull() && _target.image.isNull()) {
        showNow();    // what was on its way to black is there
        _ended(true); // nothing else would come to an end
        return;
    }
    if (wasShown) _source = _target;
    _target = {image, angle};
    _isRunning = true;
    _runningDuration = _transitionDuration;
    _clock.invalidate();
    _frame.style = _transitionStyle;
    prepare();
}

void PBSlideshowView::clearTransition() {
    platform::assertMainThread();
    ++_preparation;
    _isRunning = false;
    _ticks.stop();
    _source = _target = {};
    _frame = {};
    _frame.from = _frame.to = plainPicture({}, 0, pixelSize());
    _surface->showFrame(_frame);
}

/// Both pictures, unless they are there in that size already; and the map.
void PBSlideshowView::prepare() {
    const QSize size = pixelSize();
    if (size.isEmpty()) return; // comes with the size
    const auto reusable = [&size](const QImage& image) {
        return image.size() == size ? image : QImage();
    };
    // The new picture of the last transition is the old one of this.
    const bool isBegun = _clock.isValid();
    const QImage from = reusable(isBegun ? _frame.from : _frame.to);
    const QImage to = isBegun ? reusable(_frame.to) : QImage();
    const auto map = _frame.map && _frame.map->size == size && _preparedStyle == _frame.style
                         ? _frame.map
                         : nullptr;
    _preparedStyle = _frame.style;
    _queue.addOperation([this, size, from, to, map, style = _frame.style, source = _source,
                         target = _target, preparation = ++_preparation,
                         alive = std::weak_ptr(_alive)] {
        Prepared prepared{from, to, map};
        if (from.isNull()) prepared.from = plainPicture(source.image, source.angle, size);
        if (to.isNull()) prepared.to = plainPicture(target.image, target.angle, size);
        if (!map) prepared.map = makeTransitionMap(style, size);
        platform::MainLoop::instance()->post(
            platform::MainLoop::Mode::Common, [this, prepared, preparation, alive] {
                if (alive.lock() && preparation == _preparation) begin(prepared);
            });
    });
}

void PBSlideshowView::begin(const Prepared& prepared) {
    _frame.from = prepared.from;
    _frame.to = prepared.to;
    _frame.map = prepared.map;
    if (_isRunning && !_clock.isValid()) {
        _clock.start();
        const double rate = screen() ? screen()->refreshRate() : 60.0;
        _ticks.start(std::max(4, static_cast<int>(1000 / std::max(rate, 1.0))));
    }
    showNow();
}

void PBSlideshowView::showNow() {
    const double seconds = static_cast<double>(_clock.isValid() ? _clock.elapsed() : 0) / 1000;
    const bool isOver = !_isRunning || seconds >= _runningDuration;
    _frame.progress = isOver ? 1.0 : eased(seconds / _runningDuration);
    // Without the memory for the pictures the time passes all the same.
    if (!_frame.from.isNull() && !_frame.to.isNull()) _surface->showFrame(_frame);
    if (isOver && _isRunning) finish(true);
}

void PBSlideshowView::finish(bool finished) {
    _isRunning = false;
    _ticks.stop();
    _ended(finished);
}

void PBSlideshowView::resizeEvent(QResizeEvent*) {
    _surface->widget().setGeometry(rect());
    if (_isRunning || hasPicture()) prepare();
}
