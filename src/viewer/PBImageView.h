#pragma once

#include "viewer/geometry/ImageGeometry.h"

#include <QWidget>

#include <memory>
#include <optional>

class ImageViewHost;
class QKeyEvent;
struct ImageViewServices;

/// The large view's image area: one photograph, zoomed, turned, moved and animated, with the
/// buttons, the miniature and the indicator that lie on it. It shows the host's focus; what it
/// wants of the program it asks of the host. Main thread.
class PBImageView final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    PBImageView(ImageViewHost& host, const ImageViewServices& services, QWidget* parent = nullptr);
    ~PBImageView() override;

    /// The host's focus is another photograph, or none: it fits in, turned as it is stored. Loads
    /// of photographs that are no longer near it end, and those of its neighbours begin with
    /// `tryPreloadNextOrPrevImage`.
    void showImage();
    /// The photograph shown is the same, but its file, size or marks are not: what can stay stays.
    void imageDidChange();
    /// The large view is left: nothing moves, plays or is waited for any more, and the buttons are
    /// gone at once.
    void leave();

    /// Asks for the pictures of the photographs beside the focus.
    void tryPreloadNextOrPrevImage();

    [[nodiscard]] const ImageGeometry& geometry() const;
    /// Points for each pixel.
    [[nodiscard]] double scale() const { return geometry().placement().scale(); }
    [[nodiscard]] double angle() const { return geometry().placement().angle(); }
    [[nodiscard]] bool isFitIn() const { return geometry().placement().isFitIn(); }
    [[nodiscard]] bool isRotating() const { return geometry().isRotating(); }
    [[nodiscard]] bool canZoomIn() const { return geometry().canZoomIn(); }
    [[nodiscard]] bool canZoomOut() const { return geometry().canZoomOut(); }

    /// A step of the zoom, at a point of the view or its middle; animated.
    void zoomInAtPoint(const std::optional<QPointF>& point = {});
    void zoomOutAtPoint(const std::optional<QPointF>& point = {});
    void actualSize();
    void fitInWithAnimation(bool animation);
    /// The slider was moved, 0 to 100; answers what it snaps to.
    double zoomSlide(double slider);
    /// Where the slider stands, and what its label says, in per cent.
    [[nodiscard]] double zoomSlider() const { return geometry().zoomSlider(); }
    [[nodiscard]] int zoomPercent() const { return geometry().zoomPercent(); }
    /// The photograph was rotated: the view turns to follow, animated.
    void cwRotate();
    void ccwRotate();
    void rotateToAngle(double degrees);
    /// Moves the picture by so many points, animated.
    void scrollByDelta(const QPointF& delta);

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
    [[nodiscard]] bool isNavigationEnabled() const;

    /// What stands in the picture's place.
    enum class Painted { Nothing, Thumbnail, FitIn, Original };
    [[nodiscard]] Painted painted() const;

private:
    struct Parts;
    std::unique_ptr<Parts> _parts;
};
