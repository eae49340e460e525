#include "ui/FlagFeedback.h"

#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double duration = 0.5; // seconds
constexpr double fullSide = 60;  // points
constexpr int frameInterval = 16;

const QString objectNameOfFeedback = QStringLiteral("FlagFeedback");

double secondsSinceStart() {
    static const QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

} // namespace

void FlagFeedback::showOver(QWidget& view, bool isSet) {
    for (QWidget* former : view.findChildren<QWidget*>(objectNameOfFeedback))
        delete former;
    auto* feedback = new FlagFeedback(view, isSet, secondsSinceStart);
    feedback->show();
    feedback->raise();
}

FlagFeedback::FlagFeedback(QWidget& view, bool isSet, Clock clock)
    : QWidget(&view), _isSet(isSet), _clock(std::move(clock)), _start(_clock()) {
    setObjectName(objectNameOfFeedback);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    const int side = static_cast<int>(fullSide);
    setGeometry((view.width() - side) / 2, (view.height() - side) / 2, side, side);
    _timer.start(frameInterval, Qt::PreciseTimer, this);
}

double FlagFeedback::sideAfter(double seconds, bool isSet) {
    const double part = std::clamp(seconds / duration, 0.0, 1.0);
    const QEasingCurve curve(isSet ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    const double eased = curve.valueForProgress(part);
    return fullSide * (isSet ? eased : 1 - eased);
}

void FlagFeedback::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _timer.timerId()) return QWidget::timerEvent(event);
    update();
    if (_clock() - _start < duration) return;
    _timer.stop();
    hide();
    deleteLater();
}

void FlagFeedback::paintEvent(QPaintEvent*) {
    const int side = static_cast<int>(std::lround(sideAfter(_clock() - _start, _isSet)));
    if (side < 1) return;
    const PBThemes::Colors& colors = PBThemes::colors();
    const QPixmap flag = Icons::pixmap(
        _isSet ? QStringLiteral("flag_32_s") : QStringLiteral("flag_32_n"), QSize(side, side),
        devicePixelRatioF(), _isSet ? colors.flag : colors.icon);
    QPainter painter(this);
    painter.drawPixmap((width() - side) / 2, (height() - side) / 2, flag);
}
