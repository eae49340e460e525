#include "shell/panes/WindowSettings.h"

#include "browser/layout/BrowserMetrics.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"

#include <QString>

#include <algorithm>

namespace {

const QString statusBarKey = QStringLiteral("ShowHideStatusBar");
const QString toolbarKey = QStringLiteral("ShowHideToolbar");
const QString styleKey = QStringLiteral("ImageBrowserViewStyle");
const QString thumbnailSizeKey = QStringLiteral("ThumbnailSize");
const QString infoTagKey = QStringLiteral("InfoTag");

} // namespace

bool WindowSettings::hideStatusBar() const {
    return _defaults.boolForKey(statusBarKey).value_or(false);
}

void WindowSettings::setHideStatusBar(bool hide) {
    platform::assertMainThread();
    _defaults.setBool(hide, statusBarKey);
}

bool WindowSettings::hideToolbar() const {
    return _defaults.boolForKey(toolbarKey).value_or(false);
}

void WindowSettings::setHideToolbar(bool hide) {
    platform::assertMainThread();
    _defaults.setBool(hide, toolbarKey);
}

std::uint64_t WindowSettings::imageBrowserViewStyle() const {
    const auto stored = _defaults.integerForKey(styleKey);
    return stored ? static_cast<std::uint64_t>(std::max<qint64>(*stored, 0))
                  : BrowserMetrics::defaultStyle;
}

void WindowSettings::setImageBrowserViewStyle(std::uint64_t style) {
    platform::assertMainThread();
    _defaults.setInteger(static_cast<qint64>(style), styleKey);
}

double WindowSettings::thumbnailSize() const {
    const double size = _defaults.doubleForKey(thumbnailSizeKey).value_or(0);
    // Also for a stored value that is no number.
    if (size == 0 || size != size) return BrowserMetrics::defaultThumbnailSize;
    return std::clamp(size, BrowserMetrics::minThumbnailSize, BrowserMetrics::maxThumbnailSize);
}

void WindowSettings::setThumbnailSize(double size) {
    platform::assertMainThread();
    _defaults.setDouble(size, thumbnailSizeKey);
}

int WindowSettings::infoTag() const {
    return _defaults.integerForKey(infoTagKey).value_or(0) == 1 ? 1 : 0;
}

void WindowSettings::setInfoTag(int tag) {
    platform::assertMainThread();
    _defaults.setInteger(tag, infoTagKey);
}
