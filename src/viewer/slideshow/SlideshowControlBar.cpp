#include "viewer/slideshow/SlideshowControlBar.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"
#include "viewer/slideshow/PBSlideShowViewController.h"

#include <QActionGroup>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>

#include <array>
#include <cmath>

namespace {

using platform::localizedFormat;
using platform::localizedString;

constexpr int symbolSide = 24;
constexpr int buttonSide = 40;
constexpr int textGap = 4;
constexpr int margin = 6;
constexpr double radius = 12;
constexpr int bottomGap = 40;

const QColor ground(24, 24, 26, 205);
const QColor outline(255, 255, 255, 46);
const QColor lightSymbol(245, 245, 245);
const QColor dimSymbol(245, 245, 245, 90);

constexpr std::array<QStringView, transitionStyleCount> transitionKeys{
    u"TransitionFade",        u"TransitionMoveIn",       u"TransitionPush",     u"TransitionReveal",
    u"TransitionCopyMachine", u"TransitionDisintegrate", u"TransitionDissolve", u"TransitionFlash",
    u"TransitionMod",         u"TransitionPageCurl",     u"TransitionRipple",   u"TransitionSwipe"};

QString intervalText(int seconds) {
    return seconds == 1 ? localizedString(u"SlideshowSeconds_1")
                        : localizedFormat(u"SlideshowSeconds", {qint64{seconds}});
}

} // namespace

SlideshowButton::SlideshowButton(QWidget* parent) : QToolButton(parent) {
    // Keys go to the show, whatever was clicked last.
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
}

void SlideshowButton::setSymbol(const QString& name, const QString& description) {
    _symbol = name;
    setToolTip(description);
    setAccessibleName(description);
    update();
}

QSize SlideshowButton::sizeHint() const {
    const int textWidth =
        text().isEmpty() ? 0 : fontMetrics().horizontalAdvance(text()) + textGap + margin;
    return {buttonSide + textWidth, buttonSide};
}

void SlideshowButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isEnabled() && (underMouse() || isDown())) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, isDown() ? 70 : 36));
        painter.drawRoundedRect(rect(), radius / 2, radius / 2);
    }
    const QColor colour = isEnabled() ? lightSymbol : dimSymbol;
    const QSize side(symbolSide, symbolSide);
    const int edge = (buttonSide - symbolSide) / 2;
    painter.drawPixmap(edge, edge, Icons::pixmap(_symbol, side, devicePixelRatioF(), colour));
    painter.setPen(colour);
    painter.drawText(
        rect().adjusted(buttonSide - edge + textGap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
        text());
}

SlideshowControlBar::SlideshowControlBar(PBSlideShowViewController& controller, QWidget* parent)
    : QWidget(parent), _controller(controller), _transitionMenu(new QMenu(this)),
      _intervalMenu(new QMenu(this)), _transitions(new QActionGroup(this)),
      _intervals(new QActionGroup(this)), _effect(new QGraphicsOpacityEffect(this)) {
    using Controller = PBSlideShowViewController;
    setMouseTracking(true);
    setCursor(Qt::ArrowCursor);
    setGraphicsEffect(_effect);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(2);
    _slideshowPrevBtn = addButton(
        QStringLiteral("slideshow_prev"), QStringLiteral("SlideshowPrevious"),
        &Controller::prevImage);
    _slideshowPlayOrPauseBtn = addButton({}, {}, &Controller::playOrPause);
    _slideshowNextBtn = addButton(
        QStringLiteral("slideshow_next"), QStringLiteral("SlideshowNext"), &Controller::nextImage);
    layout->addSpacing(2 * margin + 1); // the line between
    makeTransitionMenu();
    makeIntervalMenu();
    addMenuButton(
        QStringLiteral("slideshow_transition"), QStringLiteral("SlideshowTransition"),
        *_transitionMenu);
    _intervalButton = addMenuButton(
        QStringLiteral("slideshow_interval"), QStringLiteral("SlideshowInterval"), *_intervalMenu);
    layout->addSpacing(2 * margin + 1);
    addButton(QStringLiteral("close"), QStringLiteral("SlideshowExit"), &Controller::exitSlideshow);
    _fade.setDuration(fadeTime);
    connect(&_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& alpha) {
        setAlpha(alpha.toDouble());
    });
    connect(&controller, &Controller::updateControlUI, this, &SlideshowControlBar::updateControlUI);
    updateControlUI();
}

SlideshowButton* SlideshowControlBar::addButton(
    const QString& symbol, const QString& key, void (PBSlideShowViewController::*press)()) {
    auto* button = new SlideshowButton(this);
    if (!key.isEmpty()) button->setSymbol(symbol, localizedString(key));
    connect(button, &QToolButton::clicked, &_controller, press);
    layout()->addWidget(button);
    return button;
}

SlideshowButton*
SlideshowControlBar::addMenuButton(const QString& symbol, const QString& key, QMenu& menu) {
    auto* button = new SlideshowButton(this);
    button->setSymbol(symbol, localizedString(key));
    connect(button, &QToolButton::clicked, this, [this, &menu, button] { popUp(menu, *button); });
    connect(&menu, &QMenu::aboutToHide, this, [this] { _controller.holdControls(false); });
    layout()->addWidget(button);
    return button;
}

void SlideshowControlBar::makeTransitionMenu() {
    for (int number = 0; number < transitionStyleCount; ++number) {
        QAction* action = _transitionMenu->addAction(
            localizedString(transitionKeys.at(static_cast<std::size_t>(number))));
        action->setCheckable(true);
        _transitions->addAction(action);
        connect(action, &QAction::triggered, this, [this, number] {
            _controller.transitionMenuClicked(transitionStyleOf(number));
        });
    }
}

void SlideshowControlBar::makeIntervalMenu() {
    for (int seconds = SlideshowSettings::leastInterval; seconds <= SlideshowSettings::mostInterval;
         ++seconds) {
        QAction* action = _intervalMenu->addAction(intervalText(seconds));
        action->setCheckable(true);
        _intervals->addAction(action);
        connect(action, &QAction::triggered, this, [this, seconds] {
            _controller.intervalMenuClicked(seconds);
        });
    }
    _intervalMenu->addSeparator();
    const auto addSwitch = [this](QStringView key, void (PBSlideShowViewController::*set)(bool)) {
        QAction* action = _intervalMenu->addAction(localizedString(key));
        action->setCheckable(true);
        connect(action, &QAction::triggered, &_controller, set);
        return action;
    };
    _shuffle = addSwitch(u"SlideshowShuffle", &PBSlideShowViewController::setShuffled);
    _loop = addSwitch(u"SlideshowLoop", &PBSlideShowViewController::setLoopPlay);
}

void SlideshowControlBar::popUp(QMenu& menu, const SlideshowButton& button) {
    _controller.holdControls(true);
    menu.popup(button.mapToGlobal(QPoint(0, -menu.sizeHint().height())));
}

void SlideshowControlBar::updateControlUI() {
    const bool isPause = _controller.isPause();
    _slideshowPlayOrPauseBtn->setSymbol(
        isPause ? QStringLiteral("slideshow_play_n") : QStringLiteral("slideshow_pause_n"),
        localizedString(isPause ? u"SlideshowPlay" : u"SlideshowPause"));
    _slideshowPrevBtn->setEnabled(_controller.canPrev());
    _slideshowNextBtn->setEnabled(_controller.canNext());
    updateTransitonMenu();
    updateIntervalMenu();
}

void SlideshowControlBar::updateTransitonMenu() {
    _transitions->actions()
        .at(static_cast<int>(_controller.settings().transition()))
        ->setChecked(true);
}

void SlideshowControlBar::updateIntervalMenu() {
    const SlideshowSettings& settings = _controller.settings();
    const QList<QAction*> actions = _intervals->actions();
    _intervals->setExclusive(false); // an interval of the settings may stand between two entries
    for (qsizetype i = 0; i < actions.size(); ++i)
        actions.at(i)->setChecked(static_cast<double>(i + 1) == settings.interval());
    _intervals->setExclusive(true);
    _shuffle->setChecked(settings.isShuffled());
    _loop->setChecked(settings.isLoopPlay());
    _intervalButton->setText(
        localizedFormat(u"SlideshowIntervalShort", {std::round(settings.interval() * 10) / 10}));
    _intervalButton->updateGeometry();
}

void SlideshowControlBar::setShown(bool isShown) {
    if (std::exchange(_isShown, isShown) == isShown) return;
    _fade.stop();
    _fade.setStartValue(_effect->opacity());
    _fade.setEndValue(isShown ? 1.0 : 0.0);
    _fade.start();
}

void SlideshowControlBar::setAlpha(double alpha) {
    _effect->setOpacity(alpha);
    setVisible(alpha > 0);
}

void SlideshowControlBar::placeIn(const QSize& size) {
    adjustSize();
    move((size.width() - width()) / 2, size.height() - height() - bottomGap);
}

void SlideshowControlBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(outline);
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    // Lines between the groups of buttons, in the middle of the spaces that the layout leaves.
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (int i = 0; i < layout()->count(); ++i) {
        QLayoutItem* item = layout()->itemAt(i);
        if (!item->spacerItem()) continue;
        const int x = item->geometry().center().x();
        painter.drawLine(x, 2 * margin, x, height() - 2 * margin - 1);
    }
}
