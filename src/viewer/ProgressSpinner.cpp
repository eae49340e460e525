#include "viewer/ProgressSpinner.h"

#include <QPainter>

namespace {

constexpr int side = 44; // points
constexpr int spokes = 12;
constexpr int showDelay = 250; // milliseconds
constexpr int stepTime = 80;
constexpr double innerRadius = 8;
constexpr double outerRadius = 14;

} // namespace

ProgressSpinner::ProgressSpinner(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    resize(sizeHint());
    hide();
}

QSize ProgressSpinner::sizeHint() const {
    return {side, side};
}

void ProgressSpinner::start() {
    if (_isStarted) return;
    _isStarted = true;
    _timer.start(showDelay, this);
}

void ProgressSpinner::stop() {
    _isStarted = false;
    _timer.stop();
    hide();
}

void ProgressSpinner::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _timer.timerId()) return QWidget::timerEvent(event);
    if (isHidden()) {
        show();
        raise();
        _timer.start(stepTime, this);
    }
    _step = (_step + 1) % spokes;
    update();
}

void ProgressSpinner::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 130));
    painter.drawEllipse(rect());
    painter.translate(QRectF(rect()).center());
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (_step - spoke + spokes) % spokes;
        QColor color(Qt::white);
        color.setAlphaF(1.0F - 0.8F * static_cast<float>(age) / (spokes - 1));
        painter.setPen(QPen(color, 2.5, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 * spoke / spokes);
        painter.drawLine(QPointF(0, -innerRadius), QPointF(0, -outerRadius));
        painter.restore();
    }
}
