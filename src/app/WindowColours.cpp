#include "app/WindowColours.h"

#include "image/large/PBLoadImageManager.h"

#include <QScreen>
#include <QWidget>
#include <QWindow>

WindowColours::WindowColours(QWidget& window, PBLoadImageManager& loadImageManager)
    : _window(window), _loadImageManager(loadImageManager) {
    connect(&_profiles, &platform::ScreenProfiles::profileChanged, this, [this] { update(); });
    if (QWindow* handle = _window.windowHandle())
        connect(handle, &QWindow::screenChanged, this, [this] { update(); });
    update();
}

void WindowColours::update() {
    const QScreen* screen = _window.screen();
    LargeImageScreen wanted = _loadImageManager.screen();
    // Invalid for bytes that make no sense, which counts as sRGB.
    wanted.colorSpace =
        screen ? QColorSpace::fromIccProfile(_profiles.profileOf(*screen)) : QColorSpace();
    if (wanted == _loadImageManager.screen()) return;
    _loadImageManager.setScreen(wanted);
    _window.update();
}
