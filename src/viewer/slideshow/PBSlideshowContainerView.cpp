#include "viewer/slideshow/PBSlideshowContainerView.h"

#include "platform/program/LocalizedTexts.h"
#include "viewer/slideshow/PBSlideShowViewController.h"
#include "viewer/slideshow/PBSlideshowView.h"
#include "viewer/slideshow/SlideshowControlBar.h"
#include "viewer/slideshow/surfaces/TransitionSurface.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

#include <utility>

PBSlideshowContainerView::PBSlideshowContainerView(
    PBSlideShowViewController& controller, PBSlideshowView* view, QWidget& window)
    : QWidget(&window, Qt::Window), _controller(controller), _slideshowView(view),
      _controlBar(nullptr), _window(window) {
    setWindowTitle(platform::localizedString(u"Slideshow"));
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setAutoFillBackground(true);
    view->setParent(this);
    // In the palette of the window, which its menus show.
    _controlBar = new SlideshowControlBar(controller, this);
    _controlBar->setPalette(window.palette());
    for (QWidget* widget :
         {static_cast<QWidget*>(this), static_cast<QWidget*>(view), &view->surface().widget()})
        widget->setMouseTracking(true);
    connect(
        &controller, &PBSlideShowViewController::showController, this,
        &PBSlideshowContainerView::showController);
    connect(&controller, &PBSlideShowViewController::updateControlUI, this, [this] {
        _controlBar->placeIn(size());
    });
}

void PBSlideshowContainerView::enterFullScreen() {
    _mouse = QCursor::pos();
    showController(true);
    setScreen(_window.screen());
    setGeometry(_window.screen()->geometry());
    showFullScreen();
    raise();
    activateWindow();
    setFocus();
}

void PBSlideshowContainerView::exitFullScreen() {
    hide();
    unsetCursor();
    _window.activateWindow();
}

void PBSlideshowContainerView::showController(bool isShown) {
    _controlBar->setShown(isShown);
    if (isShown) {
        unsetCursor();
    } else {
        setCursor(Qt::BlankCursor);
    }
}

void PBSlideshowContainerView::keyPressEvent(QKeyEvent* event) {
    if (!_controller.doKeyDown(*event)) QWidget::keyPressEvent(event);
}

void PBSlideshowContainerView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint mouse = event->globalPosition().toPoint();
    // A window that comes under the pointer is told of it, too.
    if (std::exchange(_mouse, mouse) == mouse) return;
    const bool isOverControls = _controlBar->geometry().contains(mapFromGlobal(mouse));
    _controller.mouseMoved(isOverControls && _controlBar->isVisible());
}

void PBSlideshowContainerView::resizeEvent(QResizeEvent*) {
    _slideshowView->setGeometry(rect());
    _controlBar->placeIn(size());
    _controlBar->raise();
}

void PBSlideshowContainerView::closeEvent(QCloseEvent* event) {
    event->ignore(); // the way out closes it
    _controller.exitSlideshow();
}
