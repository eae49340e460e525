#include "viewer/input/ImageMouse.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// What a hand trembles by, in points along either axis.
constexpr double clickDistance = 3;

} // namespace

void ImageMouse::mouseDown(const QPointF& point, ImageModifiers modifiers, int clickCount) {
    platform::assertMainThread();
    _isDragged = false;
    _downPt = point;
    _motions.finishScroll();
    if (modifiers.isZoom()) {
        _dragStatus = DragStatus::Zoom;
        _zoomDrag = _geometry.beginZoomDrag(point);
    } else if (clickCount == 2) {
        _dragStatus = DragStatus::None;
        _motions.start(_geometry.toggleActualSizeAtPoint(point));
    } else if (_geometry.placement().shouldShowNavigation()) {
        _dragStatus = DragStatus::Pan;
        _geometry.centerAnchor();
        _downDrawAnchor = _geometry.placement().drawAnchor();
    } else {
        _dragStatus = DragStatus::FileDrag;
    }
}

void ImageMouse::mouseDragged(const QPointF& point) {
    platform::assertMainThread();
    const QPointF way = point - _downPt;
    const bool isClick =
        !_isDragged && std::abs(way.x()) <= clickDistance && std::abs(way.y()) <= clickDistance;
    switch (_dragStatus) {
    case DragStatus::None:
        return;
    case DragStatus::Pan:
        _isDragged = true;
        _geometry.tryMoveDrawAnchorToPoint(_downDrawAnchor + way);
        return;
    case DragStatus::Zoom:
        if (isClick) return;
        _isDragged = true;
        _motions.stopScroll();
        _geometry.zoomByDrag(_zoomDrag, way.x());
        return;
    case DragStatus::FileDrag:
        if (isClick) return;
        // The release goes to where the file is dropped.
        _dragStatus = DragStatus::None;
        _host.beginFileDrag();
        return;
    }
}

void ImageMouse::mouseUp(const QPointF& point, ImageModifiers modifiers) {
    platform::assertMainThread();
    const bool isZoomClick =
        std::exchange(_dragStatus, DragStatus::None) == DragStatus::Zoom && !_isDragged;
    if (!isZoomClick) return;
    _motions.start(
        modifiers.shift ? _geometry.zoomOutAtPoint(point) : _geometry.zoomInAtPoint(point));
}
