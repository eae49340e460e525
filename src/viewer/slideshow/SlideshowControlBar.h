#pragma once

#include "viewer/slideshow/transitions/TransitionStyle.h"

#include <QToolButton>
#include <QVariantAnimation>
#include <QWidget>

class PBSlideShowViewController;
class QActionGroup;
class QGraphicsOpacityEffect;
class QMenu;

/// A button of the control bar: a symbol, with some a text behind it. Main thread.
class SlideshowButton final : public QToolButton {
    Q_OBJECT

public:
    explicit SlideshowButton(QWidget* parent);
    /// The name of a symbol, and what tool tip and screen readers say.
    void setSymbol(const QString& name, const QString& description);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString _symbol;
};

/// The control bar of a show, over the picture: steps, pause, menus, the way out. It shows the
/// controller's state and tells the controller what was pressed. Main thread.
class SlideshowControlBar final : public QWidget {
    Q_OBJECT

public:
    /// Fading takes so many milliseconds.
    static constexpr int fadeTime = 500;

    /// The controller outlives the bar.
    SlideshowControlBar(PBSlideShowViewController& controller, QWidget* parent);

    /// Fades in or out; nothing if it has done that or is about to.
    void setShown(bool isShown);
    [[nodiscard]] bool isShown() const { return _isShown; }
    /// In the middle of a parent of that size, above its lower edge.
    void placeIn(const QSize& size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SlideshowButton* addButton(
        const QString& symbol, const QString& key, void (PBSlideShowViewController::*press)());
    SlideshowButton* addMenuButton(const QString& symbol, const QString& key, QMenu& menu);
    void makeTransitionMenu();
    void makeIntervalMenu();
    void popUp(QMenu& menu, const SlideshowButton& button);
    void updateControlUI();
    void updateTransitonMenu();
    void updateIntervalMenu();
    void setAlpha(double alpha);

    PBSlideShowViewController& _controller;
    // Children.
    SlideshowButton* _slideshowPrevBtn;
    SlideshowButton* _slideshowPlayOrPauseBtn;
    SlideshowButton* _slideshowNextBtn;
    SlideshowButton* _intervalButton;
    QMenu* _transitionMenu;
    QMenu* _intervalMenu;
    QActionGroup* _transitions;
    QActionGroup* _intervals;
    QAction* _shuffle = nullptr;
    QAction* _loop = nullptr;
    QGraphicsOpacityEffect* _effect;
    QVariantAnimation _fade;
    bool _isShown = true;
};
