#pragma once

#include "platform/desktop/ScreenProfiles.h"

#include <QColorSpace>
#include <QObject>

class PBLoadImageManager;
class QWidget;

/// Keeps the load line in step with the colours of the screen that the main window is on: loads
/// are made for its profile, and where that changes pictures are asked for anew. Main thread.
class WindowColours final : public QObject {
public:
    /// Both outlive this object; the window has been shown.
    WindowColours(QWidget& window, PBLoadImageManager& loadImageManager);

    /// What loads are made for on a screen with this ICC profile; invalid, which is sRGB, for none
    /// that pictures can be converted to. Any thread.
    [[nodiscard]] static QColorSpace colorSpaceOf(const QByteArray& profile);

private:
    void update();

    QWidget& _window;
    PBLoadImageManager& _loadImageManager;
    platform::ScreenProfiles _profiles{platform::ScreenProfiles::systemBus()};
};
