#include "shell/commands/BrowserViewCommands.h"

#include "browser/PBImageBrowserView.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr BrowserViewCommands::StyleRow rows[] = {
    {MenuCommand::view_FileName, 1, BrowserMetrics::FileName},
    {MenuCommand::view_FileSize, 2, BrowserMetrics::FileSize},
    {MenuCommand::view_ImageSize, 3, BrowserMetrics::ImageSize},
    {MenuCommand::view_Shadow, 5, BrowserMetrics::Shadow},
    {MenuCommand::view_EnlargeSmallPhoto, 7, BrowserMetrics::EnlargeSmallPhoto},
    {MenuCommand::view_CompactGroups, 8, BrowserMetrics::Compact},
};

/// Points; twelve steps lead from the smallest thumbnails to the largest, over the default.
constexpr double zoomStep = 16;

} // namespace

BrowserViewCommands::BrowserViewCommands(
    PBImageBrowserView& view, platform::UserDefaults& defaults, QObject* parent)
    : QObject(parent), _view(view), _settings(defaults) {
    _view.setStyle(_settings.imageBrowserViewStyle());
    _view.setThumbnailSize(_settings.thumbnailSize());
    connect(&_view, &PBImageBrowserView::thumbnailSizeDidChange, this, [this](double size) {
        _settings.setThumbnailSize(size);
        Q_EMIT thumbnailSizeDidChange(size);
    });
}

std::span<const BrowserViewCommands::StyleRow> BrowserViewCommands::styleRows() {
    return rows;
}

void BrowserViewCommands::doThumbnailAndInfoMenu(int argument) {
    platform::assertMainThread();
    const StyleRow* row = std::ranges::find(rows, argument, &StyleRow::argument);
    if (row == std::end(rows)) return;
    const std::uint64_t style = _view.style() ^ row->bit;
    _settings.setImageBrowserViewStyle(style);
    _view.setStyle(style);
}

void BrowserViewCommands::thumbnailSizeSlide(double slider) {
    setThumbnailSize(sliderToThumbSize(slider));
}

void BrowserViewCommands::zoomIn() {
    setThumbnailSize((std::floor(_view.thumbnailSize() / zoomStep) + 1) * zoomStep);
}

void BrowserViewCommands::zoomOut() {
    setThumbnailSize((std::ceil(_view.thumbnailSize() / zoomStep) - 1) * zoomStep);
}

void BrowserViewCommands::setThumbnailSize(double size) {
    platform::assertMainThread();
    size = std::clamp(size, BrowserMetrics::minThumbnailSize, BrowserMetrics::maxThumbnailSize);
    if (size == _view.thumbnailSize()) return;
    _view.setThumbnailSize(size);
    _settings.setThumbnailSize(size);
    _view.reloadData();
    Q_EMIT thumbnailSizeDidChange(size);
}
