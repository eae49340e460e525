#include "shell/printing/PrintJob.h"

#include "codec/PBImageImporterManager.h"

#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace {

/// Finer than anybody sees on paper that is held in the hand.
constexpr double dotsPerInch = 300;
constexpr int longestSide = 4096;

class PdfTarget final : public PrintTarget {
public:
    PdfTarget(const QString& path, const QPageLayout& layout) : _file(path) {
        _isOpen = _file.open(QIODevice::WriteOnly);
        _writer.emplace(&_file);
        _writer->setResolution(static_cast<int>(dotsPerInch));
        _writer->setPageLayout(layout);
    }

    QPagedPaintDevice& device() override { return *_writer; }
    bool end(bool isWanted) override {
        _writer.reset();
        if (!isWanted || !_isOpen) _file.cancelWriting();
        return _isOpen && _file.commit();
    }

private:
    QSaveFile _file;
    bool _isOpen = false;
    std::optional<QPdfWriter> _writer;
};

QImage read(
    const PrintedPhotograph& photograph, int side, PBImageImporterManager& importers,
    const std::stop_token& stop) {
    const auto importer =
        photograph.path.isEmpty() ? nullptr : importers.imageImporterForImageURL(photograph.path);
    if (!importer) return {};
    codec::DecodeRequest request;
    request.maxSize = std::max(1, side);
    request.urgency = codec::Urgency::Focus;
    return importer->readImage(request, stop).frame.image;
}

} // namespace

std::unique_ptr<PrintTarget> pdfTarget(const QString& path, const QPageLayout& layout) {
    return std::make_unique<PdfTarget>(path, layout);
}

PrintJob::PrintJob(
    PrintPlan plan, std::unique_ptr<PrintTarget> target, PBImageImporterManager& importers,
    Calls calls)
    : _plan(std::move(plan)), _target(std::move(target)), _importers(importers),
      _calls(std::move(calls)) {}

void PrintJob::main() {
    const bool isPainted = paintPages();
    const bool isWritten = _target->end(isPainted && !isCancelled());
    _target.reset();
    _calls.ended({.isWritten = isPainted && isWritten, .unreadable = _unreadable});
}

bool PrintJob::paintPages() {
    QPagedPaintDevice& device = _target->device();
    QPageLayout layout = device.pageLayout();
    layout.setOrientation(QPageLayout::Portrait);
    const PrintPage::Grid grid =
        PrintPage::bestGrid(layout.paintRect().size(), _plan.perPage, _plan.photographs);
    if (!device.setPageOrientation(grid.orientation)) return false;
    QPainter painter;
    if (!painter.begin(&device)) return false;
    const double resolution = device.logicalDpiX();
    const QRectF area(QPointF(), device.pageLayout().paintRectPixels(device.logicalDpiX()).size());
    for (std::size_t i = 0; i < _plan.photographs.size(); ++i) {
        const PrintedPhotograph& photograph = _plan.photographs[i];
        const int place = static_cast<int>(i) % _plan.perPage;
        if (place == 0 && i > 0 && !device.newPage()) return false;
        const QRectF cell = PrintPage::cellRect(grid, place, area, PrintSizes::gap * resolution);
        const double inches = std::max(cell.width(), cell.height()) / resolution;
        const int side = std::min(longestSide, static_cast<int>(std::ceil(inches * dotsPerInch)));
        const QImage picture = read(photograph, side, _importers, stopToken());
        if (isCancelled()) return false;
        if (picture.isNull()) ++_unreadable;
        PrintPage::paintPhotograph(
            painter, cell, photograph, picture,
            _plan.hasNames ? PrintSizes::nameLine * resolution : 0);
        _calls.progress(static_cast<int>(i) + 1);
    }
    return painter.end();
}

PrintPreviewJob::PrintPreviewJob(
    std::vector<PrintedPhotograph> photographs, int side, PBImageImporterManager& importers,
    DidRead didRead)
    : _photographs(std::move(photographs)), _side(side), _importers(importers),
      _didRead(std::move(didRead)) {}

void PrintPreviewJob::main() {
    for (std::size_t i = 0; i < _photographs.size() && !isCancelled(); ++i) {
        const QImage picture = read(_photographs[i], _side, _importers, stopToken());
        if (!isCancelled()) _didRead(static_cast<int>(i), picture);
    }
}
