#pragma once

#include <cstdint>

namespace platform {
class UserDefaults;
}

/// What the user wants to see of the window and how, as stored. Main thread.
class WindowSettings {
public:
    /// The settings outlive this object.
    explicit WindowSettings(platform::UserDefaults& defaults) : _defaults(defaults) {}

    [[nodiscard]] bool hideStatusBar() const;
    void setHideStatusBar(bool hide);
    [[nodiscard]] bool hideToolbar() const;
    void setHideToolbar(bool hide);
    /// Bits of `BrowserMetrics::StyleBit`.
    [[nodiscard]] std::uint64_t imageBrowserViewStyle() const;
    void setImageBrowserViewStyle(std::uint64_t style);
    /// Points, within the browser's limits.
    [[nodiscard]] double thumbnailSize() const;
    void setThumbnailSize(double size);
    /// 0: the general panel, 1: the one with more information.
    [[nodiscard]] int infoTag() const;
    void setInfoTag(int tag);

private:
    platform::UserDefaults& _defaults;
};
