#pragma once

#include "viewer/geometry/NavigationGeometry.h"

#include <QImage>
#include <QMouseEvent>
#include <QWidget>

class QLabel;

/// What the miniature shows and moves: the large view's picture.
class NavigationTarget {
public:
    virtual ~NavigationTarget() = default;
    [[nodiscard]] virtual const ImagePlacement& placement() const = 0;
    /// A picture of the photograph for a miniature of so many device pixels a side; null without.
    [[nodiscard]] virtual QImage miniature(int side) = 0;
    /// Makes what is shown explicit, and answers where the draw anchor is then.
    virtual QPointF centerAnchor() = 0;
    virtual void tryMoveDrawAnchorToPoint(const QPointF& point) = 0;
    /// The mark was let go, or the miniature is hidden.
    virtual void miniatureDragDidEnd() = 0;
};

/// The miniature of the picture, dimmed but for the part that the large view shows, which can be
/// dragged about. Main thread.
class PBNavigationImageView final : public QWidget {
    Q_OBJECT

public:
    /// The target outlives this widget.
    PBNavigationImageView(NavigationTarget& target, QWidget* parent);

    [[nodiscard]] bool isDragged() const { return _isDrag; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    /// The release of a drag goes elsewhere then.
    void hideEvent(QHideEvent* event) override;

private:
    [[nodiscard]] NavigationGeometry geometryNow() const;
    void endDrag();

    NavigationTarget& _target;
    QPointF _downPt;
    QPointF _downDrawAnchor;
    bool _isDrag = false;
};

/// The panel in the corner with the miniature, and the zoom below it.
class NavigationView final : public QWidget {
    Q_OBJECT

public:
    NavigationView(NavigationTarget& target, QWidget* parent);

    /// In per cent.
    void setZoom(int percent);
    /// Something about the picture has changed.
    void pictureDidChange();
    [[nodiscard]] bool isDragged() const { return _imageView->isDragged(); }
    /// Whether the view that the panel lies on has room for it.
    [[nodiscard]] bool fits(const QSize& view) const;
    void layOut(const QSize& view);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { event->accept(); }

private:
    PBNavigationImageView* _imageView;
    QLabel* _label;
};
