#include "browser/painting/BrowserPainter.h"

#include "core/Texts.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double shadowRadius = 5; // points
constexpr double shadowOffset = 2;
constexpr double placeholderCorner = 8;
/// Of an image whose file can't be looked at now.
constexpr double awayOpacity = 0.4;
/// Three pages of pictures at full size, 4 bytes a pixel; half of a page is covered by them.
constexpr qint64 bytesPerWidgetPixel = 3 * 4 / 2;

/// A page of the smallest cells, with three lines each, and half as much again.
constexpr double linesPerPoint = 1.5 * 3 / (80 * 120);

QFont fileInfoFont() {
    QFont font = QApplication::font();
    font.setPixelSize(11);
    return font;
}

/// The device pixels that show a rectangle of points: as many wherever it lies.
QRect toPixels(const QPainter& painter, const QRectF& rect, double ratio) {
    const QPointF corner = painter.deviceTransform().map(rect.topLeft());
    // Halves go the same way above the device's edge, or what is scrolled would not fit what is
    // drawn.
    const auto whole = [](double pixel) { return static_cast<int>(std::floor(pixel + 0.5)); };
    return {QPoint(whole(corner.x()), whole(corner.y())), (rect.size() * ratio).toSize()};
}

/// Makes the painter map device pixels one to one, so that pictures of their final size are copied.
class PixelScope {
public:
    explicit PixelScope(QPainter& painter) : _painter(painter) {
        painter.save();
        painter.setTransform(painter.deviceTransform().inverted() * painter.transform());
    }
    PixelScope(const PixelScope&) = delete;
    PixelScope& operator=(const PixelScope&) = delete;
    ~PixelScope() { _painter.restore(); }

private:
    QPainter& _painter;
};

} // namespace

QString imageSizeText(QSizeF size) {
    return QStringLiteral("%1 x %2").arg(size.width(), 0, 'f', 0).arg(size.height(), 0, 'f', 0);
}

BrowserPainter::BrowserPainter(
    BrowserLayout& layout, const BrowserLeafList& leaves, BrowserThumbnailFeed& feed,
    GroupHeadPainter::Names names)
    : _layout(layout), _leaves(leaves), _feed(feed), _heads(std::move(names)),
      _fileInfo(fileInfoFont()) {}

void BrowserPainter::fontDidChange() {
    platform::assertMainThread();
    _fileInfo.setFont(fileInfoFont());
    _heads.fontDidChange();
}

void BrowserPainter::setWidgetSize(QSize size) {
    platform::assertMainThread();
    _widgetPoints = static_cast<double>(size.width()) * size.height();
    _fileInfo.setCapacity(
        std::max<qsizetype>(500, static_cast<qsizetype>(_widgetPoints * linesPerPoint)));
}

double BrowserPainter::fileNameWidth(const PBImageBrowserIndex& index) const {
    const auto item = _leaves.imageFileAtIndex(index);
    return item ? _fileInfo.width(item->fileName()) : 0;
}

double BrowserPainter::fileSizeWidth(const PBImageBrowserIndex& index) const {
    const auto item = _leaves.imageFileAtIndex(index);
    return item ? _fileInfo.width(PBUtilities::stringWithFileSize(item->fileSize())) : 0;
}

double BrowserPainter::imageSizeWidth() const {
    return _fileInfo.width(imageSizeText({1000, 1000}));
}

QRectF BrowserPainter::cellExtent(const QRectF& cellRect) const {
    constexpr double around = shadowRadius + shadowOffset;
    return cellRect.adjusted(-around, -around, around, around);
}

void BrowserPainter::begin(double pixelRatio) {
    platform::assertMainThread();
    _crude = {};
    // Nobody is told of another screen's scale.
    _prepared.setCapacity(
        static_cast<qsizetype>(_widgetPoints * pixelRatio * pixelRatio) * bytesPerWidgetPixel);
    _shadow.prepare(
        static_cast<int>(std::lround(shadowRadius * pixelRatio)),
        static_cast<int>(std::lround(shadowOffset * pixelRatio)),
        PBThemes::imageBrowserShadowColor());
    _feed.beginPaint(paintBudget, pixelRatio);
}

QRectF BrowserPainter::end(const QRectF& visible) {
    platform::assertMainThread();
    _feed.endPaint(visible);
    return _crude;
}

void BrowserPainter::draw(QPainter& painter, const Frame& frame) {
    platform::assertMainThread();
    const std::vector<BrowserHead> heads = _layout.visibleHeads(frame.visible);
    // Under the sticky head, which is drawn at every step of a motion, nothing can be seen.
    const bool isCovered = std::ranges::any_of(
        heads, [&](const BrowserHead& head) { return head.rect.contains(frame.dirty); });
    if (!isCovered) {
        painter.fillRect(
            frame.dirty.translated(-frame.visible.topLeft()),
            PBThemes::imageBrowserBackgroundColor());
        drawCells(painter, frame);
    }
    for (const BrowserHead& head : heads) {
        if (!head.rect.intersects(frame.dirty)) continue;
        _heads.draw(
            painter, head.rect.translated(-frame.visible.topLeft()), _leaves.leaf(head.group),
            {.hasTopLine = head.hasTopLine, .isActive = frame.isActive});
    }
}

void BrowserPainter::drawCells(QPainter& painter, const Frame& frame) {
    // Shadows reach out of their cells.
    constexpr double around = shadowRadius + shadowOffset;
    const BrowserRange range =
        _layout.visibleRange(frame.dirty.top() - around, frame.dirty.bottom() + around);
    if (!range.isComplete()) return;
    for (std::int64_t group = range.begin.group; group <= range.end.group; ++group) {
        if (_layout.isCollapsed(group)) continue;
        const auto items = _layout.itemsInRange(group, range.begin, range.end);
        if (!items) continue;
        for (std::int64_t item = items->first; item <= items->last; ++item) {
            const PBImageBrowserIndex index{group, item};
            const QRectF cell = _layout.cellRectAtIndex(index);
            if (!cellExtent(cell).intersects(frame.dirty)) continue;
            drawCellRect(painter, cell, index, frame);
        }
    }
}

void BrowserPainter::drawCellRect(
    QPainter& painter, const QRectF& cellRect, const PBImageBrowserIndex& index,
    const Frame& frame) {
    const auto item = _leaves.imageFileAtIndex(index);
    if (!item) return;
    const QImage thumbnail = _feed.thumbnail(index, item);
    QSizeF size = item->displaySize();
    if (!thumbnail.isNull() && (size.isEmpty() || !size.isValid())) {
        size = thumbnail.size();
        if (quarterTurns(item->rotateAngle()) % 2 != 0) size.transpose();
    }
    QRectF placed =
        size.isEmpty() ? _layout.hitTarget(cellRect, index) : _layout.placedRect(cellRect, size);
    const QRectF sheetRect = placed;
    const QRect pixels =
        toPixels(painter, placed.translated(-frame.visible.topLeft()), frame.pixelRatio);
    placed = painter.deviceTransform().inverted().mapRect(QRectF(pixels));
    const double opacity = item->isAway() ? awayOpacity : 1;
    painter.setOpacity(opacity);
    if (thumbnail.isNull() && !_feed.hasTimeLeft()) {
        // It may well be there in a moment: a quiet shape flickers less than a frame of dashes.
        QColor quiet = PBThemes::colors().placeholder;
        quiet.setAlphaF(quiet.alphaF() * 0.4F);
        painter.fillRect(placed, quiet);
    } else if (thumbnail.isNull()) {
        drawPlaceholder(painter, placed, frame);
    } else {
        drawThumbnail(painter, pixels, thumbnail, item->rotateAngle(), sheetRect);
    }
    painter.setOpacity(1);
    if (item->isSelected()) drawSelection(painter, pixels, frame);
    painter.setOpacity(opacity);
    drawTexts(painter, cellRect, index, *item, frame);
    painter.setOpacity(1);
}

void BrowserPainter::drawSelection(
    QPainter& painter, const QRect& pixels, const Frame& frame) const {
    // A point off the picture, and the rest of the frame's width wide: in whole pixels, and the
    // same on all sides.
    constexpr double gapWidth = 1;
    const auto whole = [&](double points) {
        return std::max(1, static_cast<int>(std::lround(points * frame.pixelRatio)));
    };
    const int gap = whole(gapWidth);
    const int line = whole(_layout.metrics().selectSize() - gapWidth);
    const QRect inner = pixels.adjusted(-gap, -gap, gap, gap);
    const QRect outer = inner.adjusted(-line, -line, line, line);
    const QColor color = PBThemes::imageBrowserSelectColor(frame.hasFocus);
    const PixelScope scope(painter);
    for (const QRect& side : QRegion(outer) - inner)
        painter.fillRect(side, color);
}

void BrowserPainter::drawThumbnail(
    QPainter& painter, const QRect& pixels, const QImage& thumbnail, double rotateAngle,
    const QRectF& sheetRect) {
    const QImage picture =
        _prepared.picture(thumbnail, pixels.size(), rotateAngle, _feed.hasTimeLeft());
    const PixelScope scope(painter);
    // It would shine through a pale picture.
    const bool hasShadow = _layout.metrics().has(BrowserMetrics::Shadow) && painter.opacity() == 1;
    if (hasShadow) _shadow.draw(painter, pixels);
    const double odd = std::fmod(rotateAngle, 90);
    if (!picture.isNull() && odd == 0) {
        painter.drawImage(pixels.topLeft(), picture);
        return;
    }
    // No time for the good way, or an angle that has none: the painter turns and scales.
    painter.fillRect(pixels, Qt::white);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setClipRect(pixels, Qt::IntersectClip);
    const QPointF centre = QRectF(pixels).center();
    painter.translate(centre);
    painter.rotate(-rotateAngle);
    QSizeF size = pixels.size();
    if (quarterTurns(rotateAngle) % 2 != 0) size.transpose();
    painter.drawImage(
        QRectF(QPointF(-size.width() / 2, -size.height() / 2), size), thumbnail,
        QRectF(thumbnail.rect()));
    if (odd == 0) _crude |= sheetRect;
}

void BrowserPainter::drawPlaceholder(
    QPainter& painter, const QRectF& placed, const Frame& frame) const {
    const double width = _layout.metrics().dashWidth();
    const double inset = std::rint(width / 2);
    const QRectF outline = placed.adjusted(inset, inset, -inset, -inset);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(frame.dirty.translated(-frame.visible.topLeft()));
    painter.setBrush(Qt::NoBrush);
    // Dash lengths are told in points, a pen counts in its own widths.
    QPen pen(PBThemes::imageBrowserShadowColor(), width, Qt::CustomDashLine, Qt::FlatCap);
    pen.setDashPattern({10 / width, 5 / width});
    if (_layout.metrics().has(BrowserMetrics::Shadow)) {
        QColor soft = PBThemes::imageBrowserShadowColor();
        soft.setAlphaF(soft.alphaF() * 0.35F);
        pen.setColor(soft);
        painter.setPen(pen);
        painter.drawRoundedRect(outline.translated(0, 1), placeholderCorner, placeholderCorner);
    }
    pen.setColor(PBThemes::colors().placeholder);
    painter.setPen(pen);
    painter.drawRoundedRect(outline, placeholderCorner, placeholderCorner);
    painter.restore();
}

qsizetype
BrowserPainter::differsFrom(const PBImageBrowserIndex& index, const QString& fileName) const {
    qsizetype common = 0;
    for (const std::int64_t neighbour : {index.item - 1, index.item + 1}) {
        const auto other = _leaves.imageFileAtIndex({index.group, neighbour});
        if (!other) continue;
        const QString& name = other->fileName();
        const auto end = std::ranges::mismatch(fileName, name).in1;
        common = std::max(common, static_cast<qsizetype>(end - fileName.begin()));
    }
    return common;
}

void BrowserPainter::drawTexts(
    QPainter& painter, const QRectF& cellRect, const PBImageBrowserIndex& index,
    const PBImageFileItem& item, const Frame& frame) const {
    const BrowserMetrics& metrics = _layout.metrics();
    const auto row = [&](BrowserMetrics::StyleBit bit, const QRectF& rect, auto&& text) {
        if (!metrics.has(bit) || !rect.intersects(frame.dirty)) return;
        _fileInfo.drawCentred(painter, rect.translated(-frame.visible.topLeft()), text());
    };
    painter.setFont(_fileInfo.font());
    painter.setPen(PBThemes::colors().text);
    const QRectF nameRect = _layout.fileNameRectWithCellRect(cellRect);
    if (metrics.has(BrowserMetrics::FileName) && nameRect.intersects(frame.dirty)) {
        const QString& name = item.fileName();
        _fileInfo.drawCentredFileName(
            painter, nameRect.translated(-frame.visible.topLeft()), name, differsFrom(index, name));
    }
    painter.setPen(PBThemes::colors().secondaryText);
    row(BrowserMetrics::ImageSize, _layout.imageSizeRectWithCellRect(cellRect),
        [&] { return item.imageSize().isEmpty() ? QString() : imageSizeText(item.displaySize()); });
    row(BrowserMetrics::FileSize, _layout.fileSizeRectWithCellRect(cellRect),
        [&] { return PBUtilities::stringWithFileSize(item.fileSize()); });
}
