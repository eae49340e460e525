#pragma once

#include "browser/feed/BrowserThumbnailFeed.h"
#include "browser/layout/BrowserLayout.h"
#include "browser/painting/GroupHeadPainter.h"
#include "browser/state/BrowserLeafList.h"
#include "ui/PreparedThumbnails.h"
#include "ui/ShadowPatch.h"
#include "ui/TextLines.h"

class QPainter;

/// "3000 x 2000".
[[nodiscard]] QString imageSizeText(QSizeF size);

/// Draws the part of the sheet that has to be drawn anew, and nothing else. Main thread.
class BrowserPainter final : public BrowserTextWidths {
public:
    /// All outlive this object.
    BrowserPainter(
        BrowserLayout& layout, const BrowserLeafList& leaves, BrowserThumbnailFeed& feed,
        GroupHeadPainter::Names names);

    struct Frame {
        QRectF visible;        ///< the part of the sheet on show
        QRectF dirty;          ///< the part of that to draw, on the sheet
        double pixelRatio = 1; ///< of the painter's device
        bool hasFocus = false;
        bool isActive = true; ///< the window is the active one
    };
    /// Seconds for loading and scaling in a whole paint, before cruder ways are taken.
    static constexpr double paintBudget = 0.008;
    /// Around the parts of one paint.
    void begin(double pixelRatio);
    /// The painter maps the widget's points.
    void draw(QPainter& painter, const Frame& frame);
    /// Answers the cells that deserve another, finer paint, on the sheet; empty as a rule.
    [[nodiscard]] QRectF end(const QRectF& visible);

    /// What a cell may draw on, shadow and frame included.
    [[nodiscard]] QRectF cellExtent(const QRectF& cellRect) const;
    void fontDidChange();
    [[nodiscard]] GroupHeadPainter& heads() { return _heads; }
    [[nodiscard]] const GroupHeadPainter& heads() const { return _heads; }
    /// Room for the pictures and texts of a widget of that size in points.
    void setWidgetSize(QSize size);

    [[nodiscard]] double fileNameWidth(const PBImageBrowserIndex& index) const override;
    [[nodiscard]] double fileSizeWidth(const PBImageBrowserIndex& index) const override;
    [[nodiscard]] double imageSizeWidth() const override;

private:
    void drawCells(QPainter& painter, const Frame& frame);
    void drawCellRect(
        QPainter& painter, const QRectF& cellRect, const PBImageBrowserIndex& index,
        const Frame& frame);
    /// `pixels` are those of the device, as `sheetRect` is shown by them.
    void drawThumbnail(
        QPainter& painter, const QRect& pixels, const QImage& thumbnail, double rotateAngle,
        const QRectF& sheetRect);
    void drawSelection(QPainter& painter, const QRect& pixels, const Frame& frame) const;
    void drawPlaceholder(QPainter& painter, const QRectF& placed, const Frame& frame) const;
    void drawTexts(
        QPainter& painter, const QRectF& cellRect, const PBImageBrowserIndex& index,
        const PBImageFileItem& item, const Frame& frame) const;
    /// How much of its start the name has in common with the one before it or after it.
    [[nodiscard]] qsizetype
    differsFrom(const PBImageBrowserIndex& index, const QString& fileName) const;

    BrowserLayout& _layout;
    const BrowserLeafList& _leaves;
    BrowserThumbnailFeed& _feed;
    PreparedThumbnails _prepared;
    double _widgetPoints = 0; ///< as an area
    GroupHeadPainter _heads;
    ShadowPatch _shadow;
    TextLines _fileInfo;
    QRectF _crude;
};
