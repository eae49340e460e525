#pragma once

#include "viewer/slideshow/transitions/TransitionFrame.h"

#include <QString>

#include <memory>

class OpenGLTransitions;
class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;

/// The shaders in a context of their own, without a window: tells whether they can be used here,
/// and makes frames as pictures. Main thread.
class OffscreenOpenGL {
public:
    /// nullptr where no context can be had, or where it can't make the shaders.
    [[nodiscard]] static std::unique_ptr<OffscreenOpenGL> make();
    ~OffscreenOpenGL();
    OffscreenOpenGL(const OffscreenOpenGL&) = delete;
    OffscreenOpenGL& operator=(const OffscreenOpenGL&) = delete;

    /// What draws, in the words of its driver.
    [[nodiscard]] const QString& renderer() const { return _renderer; }
    /// It is the processor of this machine that draws, on the thread that asks.
    [[nodiscard]] bool isSoftware() const;
    [[nodiscard]] int largestSide() const { return _largestSide; }

    /// Draws the frame and waits until it is there, without reading it.
    void draw(const TransitionFrame& frame);
    /// The frame as RGB32; null if a framebuffer of that size can't be had.
    [[nodiscard]] QImage paintedFrame(const TransitionFrame& frame);

private:
    OffscreenOpenGL();
    [[nodiscard]] bool start();
    [[nodiscard]] bool prepare(const QSize& size);

    std::unique_ptr<QOffscreenSurface> _surface;
    std::unique_ptr<QOpenGLContext> _context;
    std::unique_ptr<OpenGLTransitions> _transitions;
    std::unique_ptr<QOpenGLFramebufferObject> _framebuffer;
    QString _renderer;
    int _largestSide = 0;
};
