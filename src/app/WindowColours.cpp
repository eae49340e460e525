#include "app/WindowColours.h"

#include "codec/pixels/Profiles.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainThread.h"

#include <QGuiApplication>
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

QColorSpace WindowColours::colorSpaceOf(const QByteArray& profile) {
    return codec::profiles::isUsableTarget(profile) ? QColorSpace::fromIccProfile(profile)
                                                    : QColorSpace();
}

void WindowColours::update() {
    platform::assertMainThread();
    const QScreen* screen = _window.screen();
    LargeImageScreen wanted = _loadImageManager.screen();
    QByteArray profile = screen ? _profiles.profileOf(screen->name()) : QByteArray();
    if (profile.isEmpty() && screen == QGuiApplication::primaryScreen())
        profile = platform::profileOfRootWindow();
    wanted.colorSpace = colorSpaceOf(profile);
    if (wanted == _loadImageManager.screen()) return;
    _loadImageManager.setScreen(wanted);
}
