#pragma once

#include "ui/PBThumbnailScrollView.h"
#include "ui/PreparedThumbnails.h"
#include "viewer/bin/PhotoBin.h"
#include "viewer/bin/StripGeometry.h"
#include "viewer/bin/StripThumbnails.h"

#include <QBasicTimer>
#include <QWidget>

#include <optional>

/// The strip of thumbnails below the picture. What has the focus stands in the middle; moving
/// through the photographs slides the strip. Main thread.
class PBThumbnailView final : public QWidget, private ThumbnailStrip, private PhotoBinStrip {
    Q_OBJECT

public:
    /// Becomes the document view of the scroll view. All outlive this widget.
    PBThumbnailView(
        PBThumbnailScrollView& scrollView, PhotoBinHost& host, const ThumbnailSources& sources);
    ~PBThumbnailView() override;

    [[nodiscard]] PBThumbnailScrollView* scrollView() const { return &_scrollView; }
    [[nodiscard]] PhotoBin& bin() { return _bin; }
    [[nodiscard]] const PhotoBin& bin() const { return _bin; }

    /// The list is another one, or the strip has another size.
    void reloadData();
    /// The first reload that finds photographs stops the progress indicator.
    void setShouldStopAnimation(bool should) { _shouldStopAnimation = should; }
    [[nodiscard]] bool shouldStopAnimation() const { return _shouldStopAnimation; }
    /// A thumbnail was built for the photograph.
    void buildThumbDidFinish(qint64 fileId);
    /// The strip slides, or fingers hold it.
    [[nodiscard]] bool isScrolling() const { return _scrollView.isScrolling(); }
    /// Lets go of what was prepared for painting.
    void clearPreparedThumbnails();

    [[nodiscard]] StripGeometry geometry() const;
    [[nodiscard]] StripGeometry::Range visibleRange() const;
    [[nodiscard]] StripThumbnails::Items visibleImageFileItems() const;
    /// The cell in this widget.
    [[nodiscard]] QRect widgetRect(std::int64_t index) const;
    /// The cell at a point of this widget; -1 if there is none.
    [[nodiscard]] std::int64_t indexAt(const QPointF& point) const;
    /// Another number each time that other photographs may be shown.
    [[nodiscard]] std::uint64_t contentGeneration() const { return _contentGeneration; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] double itemSize() const override { return geometry().itemSize(); }
    [[nodiscard]] double roundPosition(double position) const override;
    void scrollTimeDidEnd(std::int64_t direction) override;
    void scrollIndexToCenter(std::int64_t index, bool animation) override;
    void focusDidChange() override;

    void layoutStrip();
    void didScroll();
    void preloadThumbnail();
    void adjustBuildThumb();
    void updateCell(const PBImageFileItem& item);
    /// Where a thumbnail lies in its cell, turned as it is shown.
    [[nodiscard]] static QRectF
    pictureRect(const QRectF& cell, const QImage& thumbnail, double angle);
    void drawAtIndex(QPainter& painter, std::int64_t index, double ratio);
    void drawCentreFrame(QPainter& painter) const;
    void beginDragOut(std::int64_t index);

    PBThumbnailScrollView& _scrollView;
    PhotoBinHost& _host;
    PhotoBin _bin;
    StripThumbnails _thumbnails;
    PreparedThumbnails _prepared;
    bool _shouldStopAnimation = false;
    bool _isJumping = false; ///< the strip is moved by its focus, not by the user
    bool _isDragged = false; ///< a drag began since the last press
    bool _isCrude = false;   ///< this paint had no time for something
    std::optional<QPointF> _downPoint;
    QBasicTimer _adjustTimer;
    int _direction = 1; ///< of the last motion
    double _lastPosition = 0;
    std::uint64_t _contentGeneration = 0;
};
