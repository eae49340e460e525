#pragma once

#include "viewer/geometry/ImageGeometry.h"
#include "viewer/input/ImageInputHost.h"
#include "viewer/state/ImageMotions.h"

#include <QPointF>

/// Modifier keys by what they mean here.
struct ImageModifiers {
    bool shift = false;
    bool command = false; ///< Ctrl on this platform
    bool option = false;  ///< Alt, which many window managers take for themselves
    /// Either does: with a wheel, a click or a drag.
    [[nodiscard]] bool isZoom() const { return command || option; }
};

/// The pressed mouse: zooms, moves the picture, or drags its file out. Main thread.
class ImageMouse {
public:
    ImageMouse(ImageGeometry& geometry, ImageMotions& motions, ImageInputHost& host)
        : _geometry(geometry), _motions(motions), _host(host) {}

    /// `clickCount` is 2 for the press of a double click.
    void mouseDown(const QPointF& point, ImageModifiers modifiers, int clickCount);
    void mouseDragged(const QPointF& point);
    void mouseUp(const QPointF& point, ImageModifiers modifiers);
    /// The button was let go where nobody could hear it, or something else moves the picture.
    void cancel() { _dragStatus = DragStatus::None; }

    [[nodiscard]] bool isPanning() const { return _dragStatus == DragStatus::Pan; }
    /// Between press and release, with the picture following.
    [[nodiscard]] bool isFollowing() const {
        return _isDragged && (isPanning() || _dragStatus == DragStatus::Zoom);
    }

private:
    enum class DragStatus { None, Zoom, Pan, FileDrag };

    ImageGeometry& _geometry;
    ImageMotions& _motions;
    ImageInputHost& _host;
    DragStatus _dragStatus = DragStatus::None;
    bool _isDragged = false;
    QPointF _downPt;
    QPointF _downDrawAnchor;
    ImageGeometry::ZoomDrag _zoomDrag;
};
