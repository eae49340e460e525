#include "browser/state/BrowserScrollCapture.h"

#include <limits>

namespace {

using Capture = PBImageBrowserViewScrollCapture;

double headCentre(BrowserLayout& layout, std::int64_t group) {
    return layout.groupItemPosition(group) + BrowserMetrics::headHeight / 2;
}

double cellCentre(BrowserLayout& layout, const PBImageBrowserIndex& index) {
    const QRectF cell = layout.cellRectAtIndex(index);
    return cell.y() + cell.height() / 2;
}

Capture anchoredAt(
    BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& index,
    double centreLine) {
    return {
        Capture::Anchored, leaves.leaf(index.group).data, leaves.imageFileAtIndex(index),
        centreLine - cellCentre(layout, index)};
}

std::optional<Capture>
captureNearest(BrowserLayout& layout, const BrowserLeafList& leaves, const QRectF& visible) {
    const double line = visible.center().y();
    const QPointF middle(layout.contentWidth() / 2, line);
    // With the spaces around the line: in the gap between two rows lies nothing.
    const double space = layout.metrics().cellSpace();
    const BrowserRange range = layout.visibleRange(line - space, line + space);
    if (!range.isComplete()) return std::nullopt;
    std::optional<Capture> nearest;
    double nearestDistance = std::numeric_limits<double>::max();
    const auto isNearer = [&](const QPointF& centre) {
        const QPointF way = centre - middle;
        const double distance = QPointF::dotProduct(way, way);
        if (distance >= nearestDistance) return false;
        nearestDistance = distance;
        return true;
    };
    for (std::int64_t group = range.begin.group; group <= range.end.group; ++group) {
        const double head = headCentre(layout, group);
        if (isNearer({middle.x(), head}))
            nearest = {Capture::Anchored, leaves.leaf(group).data, nullptr, line - head};
    }
    layout.forEachVisible(line - space, line + space, [&](const PBImageBrowserIndex& index) {
        if (isNearer(layout.cellRectAtIndex(index).center()))
            nearest = anchoredAt(layout, leaves, index, line);
    });
    return nearest;
}

} // namespace

std::optional<PBImageBrowserViewScrollCapture> captureScrollWithMode(
    ScrollCaptureMode mode, BrowserLayout& layout, const BrowserLeafList& leaves,
    const QRectF& visible, const std::shared_ptr<PBImageFileItem>& editingNameFileItem) {
    const double line = visible.center().y();
    const PBImageBrowserIndex editing = leaves.indexForImageFile(editingNameFileItem);
    if (editing.isValid()) return anchoredAt(layout, leaves, editing, line);
    if (mode == ScrollCaptureMode::Nearest) return captureNearest(layout, leaves, visible);

    PBImageBrowserIndex selected;
    if (mode == ScrollCaptureMode::VisibleSelection) {
        layout.forEachVisible(
            visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
                if (!selected.isValid() && leaves.imageFileAtIndex(index)->isSelected())
                    selected = index;
            });
        if (!selected.isValid()) return Capture{Capture::EndOfSheet, nullptr, nullptr, 0};
        return anchoredAt(layout, leaves, selected, line);
    }
    leaves.forEachImage(
        FoldedLeaves::Excluded, [&](const PBImageBrowserIndex& index, const auto& item) {
            if (!selected.isValid() && item->isSelected()) selected = index;
        });
    if (!selected.isValid()) return std::nullopt;
    return Capture{
        Capture::Anchored, leaves.leaf(selected.group).data, leaves.imageFileAtIndex(selected),
        visible.height() / 2};
}

std::optional<double> scrollPositionOfCapture(
    const PBImageBrowserViewScrollCapture& capture, BrowserLayout& layout,
    const BrowserLeafList& leaves, const QRectF& visible) {
    if (capture.type == Capture::EndOfSheet) return layout.contentHeight();
    double centre = 0;
    if (capture.imageFileItem) {
        // The image may have moved to another leaf.
        PBImageBrowserIndex index = leaves.indexForImageFile(capture.imageFileItem);
        if (!index.isValid()) index = leaves.indexOfSamePhotograph(*capture.imageFileItem);
        if (!index.isValid()) return std::nullopt;
        centre = cellCentre(layout, index);
    } else {
        const std::int64_t group = leaves.groupOfData(*capture.groupItem);
        if (group < 0) return std::nullopt;
        centre = headCentre(layout, group);
    }
    return centre - visible.height() / 2 + capture.offset;
}
