#pragma once

#include "viewer/slideshow/transitions/TransitionFrame.h"

#include <array>
#include <memory>

class QOpenGLContext;
class QOpenGLShaderProgram;

/// The transitions by shaders, in one OpenGL context, 2.0 or ES 2.0 at least. Every call but the
/// constructor needs that context to be current, the destructor too. The thread of the context.
class OpenGLTransitions {
public:
    OpenGLTransitions();
    ~OpenGLTransitions();
    OpenGLTransitions(const OpenGLTransitions&) = delete;
    OpenGLTransitions& operator=(const OpenGLTransitions&) = delete;

    /// Makes all programs; false if one can't be made.
    [[nodiscard]] bool initialize();
    /// Paints the frame over the whole of the current framebuffer, which has that size in pixels.
    /// What is known of an earlier frame isn't handed over again.
    void paint(const TransitionFrame& frame, const QSize& framebuffer);

    /// The longer side of the largest picture that the context takes, in pixels.
    [[nodiscard]] static int largestSide();

private:
    /// A texture and what was last put into it.
    struct Texture {
        unsigned name = 0;
        qint64 content = -1;
    };

    /// Makes the texture current at that unit, and says whether it has to be filled.
    [[nodiscard]] static bool bind(Texture& texture, int unit, qint64 content, bool isSmooth);
    void putPictures(const TransitionFrame& frame);
    void putMap(const std::shared_ptr<const TransitionMap>& map);
    void putShine();

    std::array<std::unique_ptr<QOpenGLShaderProgram>, transitionStyleCount> _programs;
    std::unique_ptr<QOpenGLShaderProgram> _plain;
    Texture _from;
    Texture _to;
    Texture _map;
    Texture _shine;
    std::shared_ptr<const TransitionMap> _shownMap;
};
