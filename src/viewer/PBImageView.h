#pragma once

#include "viewer/ImageViewPictures.h"
#include "viewer/PBNavigationImageView.h"
#include "viewer/geometry/ImageGeometry.h"
#include "viewer/input/ImageInput.h"
#include "viewer/input/ImageTouch.h"
#include "viewer/painting/ImagePainter.h"
#include "viewer/state/FramePlayer.h"
#include "viewer/state/ImageMotions.h"

#include <QBasicTimer>
#include <QWidget>

#include <memory>
#include <optional>

class DropTip;
class ImageViewHost;
class ProgressSpinner;
class QKeyEvent;
class QNativeGestureEvent;
class QTouchEvent;
class StepButtons;

/// The large view's image area: one photograph, zoomed, turned, moved and animated, with the
/// buttons, the miniature and the indicator that lie on it. It shows the host's focus; what it
/// wants of the program it asks of the host. Main thread.
class PBImageView final : public QWidget, private ImageInputHost, private NavigationTarget {
    Q_OBJECT

public:
    /// The host outlives the view. The clock is that of all motions.
    PBImageView(
        ImageViewHost& host, const ImageViewServices& services, QWidget* parent = nullptr,
        ImageMotions::Clock clock = ScrollMotion::monotonicClock());
    ~PBImageView() override;

    /// The host's focus is another photograph, or none: it fits in, turned as it is stored. Loads
    /// of photographs that are no longer near it end, and those of its neighbours begin with
    /// `tryPreloadNextOrPrevImage`.
    void showImage();
    /// The photograph shown is the same, but its file, size or marks are not: what can stay stays,
    /// and one that was rotated turns, animated.
    void imageDidChange();
    /// The large view is left: nothing moves, plays or is waited for any more, and the buttons are
    /// gone at once.
    void leave();

    /// Asks for the pictures of the photographs beside the focus.
    void tryPreloadNextOrPrevImage();

    [[nodiscard]] const ImageGeometry& imageGeometry() const { return _geometry; }
    /// Points for each pixel.
    [[nodiscard]] double scale() const { return imageGeometry().placement().scale(); }
    [[nodiscard]] double angle() const { return imageGeometry().placement().angle(); }
    [[nodiscard]] bool isFitIn() const { return imageGeometry().placement().isFitIn(); }
    [[nodiscard]] bool isRotating() const { return imageGeometry().isRotating(); }
    [[nodiscard]] bool canZoomIn() const { return imageGeometry().canZoomIn(); }
    [[nodiscard]] bool canZoomOut() const { return imageGeometry().canZoomOut(); }

    /// A step of the zoom, at a point of the view or its middle; animated.
    void zoomInAtPoint(const std::optional<QPointF>& point = {});
    void zoomOutAtPoint(const std::optional<QPointF>& point = {});
    void actualSize();
    void fitInWithAnimation(bool animation);
    /// The slider was moved, 0 to 100; answers what it snaps to.
    double zoomSlide(double slider);
    /// Where the slider stands, and what its label says, in per cent.
    [[nodiscard]] double zoomSlider() const { return imageGeometry().zoomSlider(); }
    [[nodiscard]] int zoomPercent() const { return imageGeometry().zoomPercent(); }
    /// Moves the picture by so many points, animated.
    void scrollByDelta(const QPointF& delta);

    /// See `ImageWheel::setZooms`.
    void setWheelZooms(bool zooms) { _input.wheel().setZooms(zooms); }
    /// What the picture lies on; nothing stands for the colour behind the window's thumbnails.
    void setGround(const std::optional<QColor>& ground);

    /// A key that was pressed in the strip or elsewhere in the large view; false if it means
    /// nothing here.
    bool keyDown(const QKeyEvent& event);

    /// Something is on its way: the indicator turns until a picture is there.
    void startProgressIndicator();
    void stopProgressIndicator();
    [[nodiscard]] bool isProgressIndicatorShown() const;

    /// Fades the buttons to the next and the previous photograph in or out, after so many seconds.
    void showPrevNextButton(bool isShown, double delay);
    /// The neighbours may have changed.
    void updatePrevNextButton();
    /// The miniature is shown where the picture is larger than the view, unless it is switched off.
    void setNavigationEnabled(bool isEnabled);
    [[nodiscard]] bool isNavigationEnabled() const { return _isNavigationEnabled; }

    /// What stands in the picture's place.
    enum class Painted { Nothing, Thumbnail, FitIn, Original };
    /// As of the last paint.
    [[nodiscard]] Painted painted() const { return _painted; }
    /// The frame of an animation that is shown.
    [[nodiscard]] std::size_t indexOfImages() const { return _player.indexOfImages(); }
    /// The photograph that is shown; nullptr when there is none.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> focusImageFileItem() const;
    /// Nothing moves, and nothing follows the user's hand.
    [[nodiscard]] bool isAtRest() const;

protected:
    bool event(QEvent* event) override;
    /// Of the whole program while the view is shown: modifiers that change the cursor, and keys
    /// that are let go, go to whatever has the keyboard.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    // What the input wants.
    [[nodiscard]] SwipeNeighbours neighbours() const override;
    void step(ImageStep step) override;
    void perform(ImageCommand command) override;
    void beginFileDrag() override;
    // What the miniature wants.
    [[nodiscard]] const ImagePlacement& placement() const override { return _geometry.placement(); }
    [[nodiscard]] QImage miniature(int side) override;
    QPointF centerAnchor() override;
    void tryMoveDrawAnchorToPoint(const QPointF& point) override;
    void miniatureDragDidEnd() override { settle(); }

    void start(const std::optional<GeometryAnimation>& animation);
    void requestFocus();
    void followRotation();
    void tick();
    /// After anything that may have changed the geometry: repaints what it has to, tells of the
    /// zoom, and sees to the next frame.
    void settle();
    void schedule();
    void repaintMoved(const ImagePlacement& was);
    [[nodiscard]] bool scrollPixels(const QPointF& way);
    void zoomDidChange();
    void updateNavigationShowHide();
    /// Where the view lies in its window, and the screen that it is on.
    void updateViewport();
    /// Tells the load line of the screen; true where it is another than before.
    bool updateScreen();
    void screenDidChange();
    void updateCursor();
    [[nodiscard]] ImageScene sceneNow();
    [[nodiscard]] QColor groundNow() const;
    [[nodiscard]] std::optional<ImageScene::Picture> swipedNeighbour() const;
    void noteWaiting(const ImageViewPictures::Picture& picture, bool canCome);
    void updateSpinner();
    [[nodiscard]] FramePlayer::Frames framesNow() const;
    void startPlayTimer();
    void didLoad(const std::shared_ptr<PBImageFileItem>& item);
    void pressAt(QMouseEvent* event, int clickCount);
    void moveButtons(const QPointF& point);
    bool nativeGesture(QNativeGestureEvent* event);
    bool touch(QTouchEvent* event);
    [[nodiscard]] double timeOf(quint64 timestamp) const;

    ImageViewHost& _host;
    PBLoadImageManager& _loadImageManager;
    const group::FolderPaths& _folderPaths;
    ImageGeometry _geometry;
    ImageMotions _motions;
    ImageInput _input;
    ImageTouch _touch;
    FramePlayer _player;
    ImageViewPictures _pictures;

    StepButtons* _buttons;
    NavigationView* _navigationView;
    ProgressSpinner* _progressIndicator;
    DropTip* _dragTipView;

    QBasicTimer _frameTimer;
    QBasicTimer _wakeTimer;
    ImagePlacement _settled; // as of the last `settle`
    std::optional<QColor> _ground = ImagePainter::groundColor();
    bool _wasAtRest = true;
    bool _hasZoomed = false; // since the picture was at rest
    bool _isNavigationEnabled = true;
    bool _isWaitingForPhotographs = false; // as the host says
    bool _isWaitingForPicture = false;
    bool _isFocusShown = false;
    bool _hasMessage = false; // in the last paint
    bool _isZoomKeyDown = false;
    enum class Cursor { Arrow, Hand, Grabbing, Zoom };
    Cursor _cursor = Cursor::Arrow;
    Painted _painted = Painted::Nothing;
    std::weak_ptr<PBImageFileItem> _clickedItem;
    struct Miniature {
        qint64 cacheKey = 0;
        int side = 0;
        QImage image;
    };
    Miniature _miniature;
};
