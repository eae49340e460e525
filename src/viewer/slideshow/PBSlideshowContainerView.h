#pragma once

#include <QPoint>
#include <QWidget>

class PBSlideShowViewController;
class PBSlideshowView;
class SlideshowControlBar;

/// The window of a show, on the whole screen: holds picture area and control bar, and takes the
/// keys. Main thread.
class PBSlideshowContainerView final : public QWidget {
    Q_OBJECT

public:
    /// The view becomes a child. The window is that which the show begins from; both it and the
    /// controller outlive this one.
    PBSlideshowContainerView(
        PBSlideShowViewController& controller, PBSlideshowView* view, QWidget& window);

    /// On the screen of that window, over all else.
    void enterFullScreen();
    /// Gives the screen back to that window.
    void exitFullScreen();
    [[nodiscard]] SlideshowControlBar& controlBar() { return *_controlBar; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void showController(bool isShown);

    PBSlideShowViewController& _controller;
    PBSlideshowView* _slideshowView;  // a child
    SlideshowControlBar* _controlBar; // a child
    QWidget& _window;
    QPoint _mouse; // where it was last seen, on the screen
};
