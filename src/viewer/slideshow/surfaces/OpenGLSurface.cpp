#include "viewer/slideshow/surfaces/OpenGLSurface.h"

#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/transitions/OpenGLTransitions.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

OpenGLSurface::OpenGLSurface(QWidget* parent) : QOpenGLWidget(parent) {}

OpenGLSurface::~OpenGLSurface() {
    // The context goes after this class's own part has gone.
    if (context())
        disconnect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &OpenGLSurface::letGo);
    letGo();
}

void OpenGLSurface::letGo() {
    if (!_transitions) return;
    makeCurrent();
    _transitions.reset();
    doneCurrent();
}

void OpenGLSurface::showFrame(const TransitionFrame& frame) {
    platform::assertMainThread();
    _frame = frame;
    update();
}

/// Once for each context: the widget gets another one where it comes to another window.
void OpenGLSurface::initializeGL() {
    connect(
        context(), &QOpenGLContext::aboutToBeDestroyed, this, &OpenGLSurface::letGo,
        Qt::UniqueConnection);
    _transitions = std::make_unique<OpenGLTransitions>();
    if (!_transitions->initialize()) _transitions.reset();
}

void OpenGLSurface::paintGL() {
    QOpenGLFunctions& functions = *context()->functions();
    functions.glClearColor(0, 0, 0, 1);
    functions.glClear(GL_COLOR_BUFFER_BIT);
    if (_frame && !_frame->from.isNull() && _transitions)
        _transitions->paint(*_frame, size() * devicePixelRatioF());
}
