#include "info/PBStarRatingCell.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

PBStarRatingCell::PBStarRatingCell(QWidget* parent) : QAbstractSlider(parent) {
    setRange(0, starCount);
    setOrientation(Qt::Horizontal);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setToolTip(platform::localizedString(u"RatingTip"));
}

QSize PBStarRatingCell::sizeHint() const {
    constexpr int room = 2; // for the frame of the focus
    return {leftRoom + starCount * starSize + room, starSize + 2 * room};
}

void PBStarRatingCell::setRating(int stars, bool isMixed) {
    _isMixed = isMixed;
    _isSetting = true;
    setValue(isMixed ? 0 : stars);
    _isSetting = false;
    setAccessibleDescription(
        isMixed ? platform::localizedString(u"Multivalue")
                : platform::localizedFormat(stars == 1 ? u"StarsState_1" : u"StarsState", {stars}));
    update();
}

int PBStarRatingCell::starsAt(double x) const {
    if (x < leftRoom) return 0;
    return std::min(starCount, static_cast<int>((x - leftRoom) / starSize) + 1);
}

void PBStarRatingCell::choose(int stars) {
    if (stars == value() && !_isMixed) return;
    setRating(stars, false);
    Q_EMIT ratingIndicatorAction(stars);
}

/// A screen reader has set a value.
void PBStarRatingCell::sliderChange(SliderChange change) {
    QAbstractSlider::sliderChange(change);
    update();
    if (change == SliderValueChange && !_isSetting) {
        _isMixed = false;
        Q_EMIT ratingIndicatorAction(value());
    }
}

void PBStarRatingCell::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    _pressedStars = starsAt(event->position().x());
    _trackedStars = _pressedStars;
    _hasMoved = false;
    update();
}

void PBStarRatingCell::mouseMoveEvent(QMouseEvent* event) {
    if (_pressedStars < 0) return;
    _trackedStars = starsAt(event->position().x());
    _hasMoved = _hasMoved || _trackedStars != _pressedStars;
    update();
}

void PBStarRatingCell::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || _pressedStars < 0) return;
    _pressedStars = -1;
    const int stars = std::exchange(_trackedStars, -1);
    const bool isSecondClick = !_hasMoved && !_isMixed && stars == value();
    choose(isSecondClick ? 0 : stars);
    update();
}

int PBStarRatingCell::starsOfKey(const QKeyEvent& event) const {
    if ((event.modifiers() & ~Qt::KeypadModifier) != 0) return -1;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return std::max(0, value() - 1);
    case Qt::Key_Right:
    case Qt::Key_Up:
        return std::min(starCount, value() + 1);
    case Qt::Key_Home:
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return 0;
    case Qt::Key_End:
        return starCount;
    default:
        return event.key() >= Qt::Key_0 && event.key() <= Qt::Key_5 ? event.key() - Qt::Key_0 : -1;
    }
}

void PBStarRatingCell::keyPressEvent(QKeyEvent* event) {
    const int stars = starsOfKey(*event);
    if (stars < 0) return event->ignore(); // the slider has keys of its own
    choose(stars);
}

bool PBStarRatingCell::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        starsOfKey(*static_cast<QKeyEvent*>(event)) >= 0)
        event->accept();
    return QAbstractSlider::event(event);
}

/// The page scrolls; nobody rates with a wheel.
void PBStarRatingCell::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void PBStarRatingCell::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const int stars = _trackedStars >= 0 ? _trackedStars : value();
    const PBThemes::Colors& colors = PBThemes::colors();
    const QSize size(starSize, starSize);
    const int y = (height() - starSize) / 2;
    for (int star = 0; star < starCount; ++star) {
        const bool isOn = star < stars;
        painter.drawPixmap(
            leftRoom + star * starSize, y,
            Icons::pixmap(
                isOn ? QStringLiteral("star_16_s") : QStringLiteral("star_16_n"), size,
                devicePixelRatioF(), isOn ? colors.star : colors.icon));
    }
    if (!hasFocus()) return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect().adjusted(leftRoom - 2, 0, 0, 0);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}
