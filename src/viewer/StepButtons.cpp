#include "viewer/StepButtons.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"

#include <QAbstractButton>
#include <QPainter>
#include <QTimerEvent>

#include <cmath>

namespace {

constexpr int side = 48;   // points
constexpr int margin = 20; // from the view's sides
constexpr int nearWidth = 40;
constexpr int nearHeight = 100;
constexpr int fadeTime = 800; // milliseconds
constexpr QSize symbolSize(24, 24);

} // namespace

/// White on a dark disc: over photographs of any colour.
class StepButtons::Button final : public QAbstractButton {
public:
    Button(const QString& icon, const QString& textKey, QWidget* parent)
        : QAbstractButton(parent), _icon(icon) {
        resize(side, side);
        setFocusPolicy(Qt::NoFocus); // keys do the same
        setMouseTracking(true);
        setCursor(Qt::ArrowCursor);
        setAccessibleName(platform::localizedString(textKey));
        setToolTip(accessibleName());
        hide();
    }

    void setOpacity(double opacity) {
        _opacity = opacity;
        update();
    }
    [[nodiscard]] double opacity() const { return _opacity; }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(_opacity * (isEnabled() ? 1.0 : 0.35));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, isDown() ? 200 : underMouse() ? 165 : 120));
        painter.drawEllipse(rect());
        const QPixmap symbol = Icons::pixmap(_icon, symbolSize, devicePixelRatioF(), Qt::white);
        painter.drawPixmap(
            QPoint((width() - symbolSize.width()) / 2, (height() - symbolSize.height()) / 2),
            symbol);
    }

private:
    const QString _icon;
    double _opacity = 0;
};

StepButtons::StepButtons(QWidget& view)
    : QObject(&view), _view(view),
      _previous(new Button(QStringLiteral("previous"), QStringLiteral("PreviousPhoto"), &view)),
      _next(new Button(QStringLiteral("next"), QStringLiteral("NextPhoto"), &view)) {
    connect(_previous, &QAbstractButton::clicked, this, &StepButtons::previousClicked);
    connect(_next, &QAbstractButton::clicked, this, &StepButtons::nextClicked);
    _fade.setDuration(fadeTime);
    connect(&_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        setOpacity(value.toDouble());
    });
    connect(&_fade, &QVariantAnimation::finished, this, [this] {
        if (_isShown) return;
        _previous->hide();
        _next->hide();
    });
}

void StepButtons::showPrevNextButton(bool isShown, double delay) {
    if (isShown == _isShown) return;
    _isShown = isShown;
    _delay.stop();
    if (delay > 0)
        _delay.start(static_cast<int>(std::lround(delay * 1000)), this);
    else
        doShowPrevNextButton();
}

void StepButtons::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _delay.timerId()) return QObject::timerEvent(event);
    _delay.stop();
    doShowPrevNextButton();
}

void StepButtons::doShowPrevNextButton() {
    _fade.stop();
    const double from = _previous->opacity();
    const double to = _isShown ? 1.0 : 0.0;
    if (from == to) return;
    _previous->setVisible(true);
    _next->setVisible(true);
    _fade.setStartValue(from);
    _fade.setEndValue(to);
    _fade.start();
}

void StepButtons::hideAtOnce() {
    _isShown = false;
    _delay.stop();
    _fade.stop();
    setOpacity(0);
    _previous->hide();
    _next->hide();
}

void StepButtons::setOpacity(double opacity) {
    _previous->setOpacity(opacity);
    _next->setOpacity(opacity);
}

void StepButtons::setEnabled(bool hasPrevious, bool hasNext) {
    _previous->setEnabled(hasPrevious);
    _next->setEnabled(hasNext);
}

void StepButtons::layOut() {
    const int top = static_cast<int>(std::rint((_view.height() - side) / 2.0));
    _previous->move(margin, top);
    _next->move(_view.width() - margin - side, top);
}

bool StepButtons::isNearPrevious(const QPointF& point) const {
    return QRectF(_previous->geometry())
        .adjusted(-nearWidth, -nearHeight, nearWidth, nearHeight)
        .contains(point);
}

bool StepButtons::isNearNext(const QPointF& point) const {
    return QRectF(_next->geometry())
        .adjusted(-nearWidth, -nearHeight, nearWidth, nearHeight)
        .contains(point);
}
