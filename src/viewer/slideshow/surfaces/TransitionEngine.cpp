#include "viewer/slideshow/surfaces/TransitionEngine.h"

#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/surfaces/OpenGLSurface.h"
#include "viewer/slideshow/surfaces/RasterSurface.h"
#include "viewer/slideshow/transitions/OffscreenOpenGL.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

/// Every screen's picture fits into a texture.
bool takesAllScreens(int largestSide) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QSizeF size = QSizeF(screen->size()) * screen->devicePixelRatio();
        if (std::max(size.width(), size.height()) > largestSide) return false;
    }
    return true;
}

TransitionEngine choose() {
    const QByteArray wish = qgetenv("VELMORA_TRANSITIONS");
    if (wish == "raster") return {};
    const auto shaders = OffscreenOpenGL::make();
    if (!shaders) return {};
    const bool isWanted = wish == "opengl" || !shaders->isSoftware();
    return {isWanted && takesAllScreens(shaders->largestSide()), shaders->renderer()};
}

} // namespace

const TransitionEngine& transitionEngine() {
    platform::assertMainThread();
    static const TransitionEngine engine = choose();
    return engine;
}

TransitionSurface* makeTransitionSurface(const TransitionEngine& engine, QWidget* parent) {
    if (engine.isOpenGL) return new OpenGLSurface(parent);
    return new RasterSurface(parent);
}
