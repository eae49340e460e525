#include "viewer/slideshow/transitions/OffscreenOpenGL.h"

#include "viewer/slideshow/transitions/OpenGLTransitions.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace {

bool create(QOpenGLContext& context) {
#ifdef __SANITIZE_ADDRESS__
    // What a driver knows of the processor it keeps for good, and is unloaded before leaks are
    // looked for: nothing would tell then whose it is.
    const __lsan::ScopedDisabler ofTheDriver;
#endif
    return context.create();
}

} // namespace

OffscreenOpenGL::OffscreenOpenGL() = default;

OffscreenOpenGL::~OffscreenOpenGL() {
    if (_transitions && _context->makeCurrent(_surface.get())) {
        _framebuffer.reset();
        _transitions.reset();
        _context->doneCurrent();
    }
}

std::unique_ptr<OffscreenOpenGL> OffscreenOpenGL::make() {
    std::unique_ptr<OffscreenOpenGL> made(new OffscreenOpenGL);
    return made->start() ? std::move(made) : nullptr;
}

bool OffscreenOpenGL::start() {
    _context = std::make_unique<QOpenGLContext>();
    if (!create(*_context)) return false;
    _surface = std::make_unique<QOffscreenSurface>();
    _surface->setFormat(_context->format());
    _surface->create();
    if (!_surface->isValid() || !_context->makeCurrent(_surface.get())) return false;
    const auto* name =
        reinterpret_cast<const char*>(_context->functions()->glGetString(GL_RENDERER));
    _renderer = QString::fromLatin1(name);
    _largestSide = OpenGLTransitions::largestSide();
    _transitions = std::make_unique<OpenGLTransitions>();
    const bool canDraw =
        QOpenGLFramebufferObject::hasOpenGLFramebufferObjects() && _transitions->initialize();
    if (!canDraw) _transitions.reset();
    _context->doneCurrent();
    return canDraw;
}

bool OffscreenOpenGL::isSoftware() const {
    // The names that Mesa's software renderers give themselves.
    for (const char* name : {"llvmpipe", "softpipe", "swrast", "Software Rasterizer", "SWR"})
        if (_renderer.contains(QLatin1StringView(name), Qt::CaseInsensitive)) return true;
    return false;
}

bool OffscreenOpenGL::prepare(const QSize& size) {
    if (size.isEmpty() || !_context->makeCurrent(_surface.get())) return false;
    if (!_framebuffer || _framebuffer->size() != size)
        _framebuffer = std::make_unique<QOpenGLFramebufferObject>(size);
    return _framebuffer->isValid() && _framebuffer->bind();
}

void OffscreenOpenGL::draw(const TransitionFrame& frame) {
    if (!prepare(frame.from.size())) return;
    _transitions->paint(frame, frame.from.size());
    _context->functions()->glFinish();
}

QImage OffscreenOpenGL::paintedFrame(const TransitionFrame& frame) {
    if (!prepare(frame.from.size())) return {};
    _transitions->paint(frame, frame.from.size());
    return _framebuffer->toImage().convertToFormat(QImage::Format_RGB32);
}
