#pragma once

#include "viewer/slideshow/surfaces/TransitionSurface.h"

#include <QOpenGLWidget>

#include <memory>
#include <optional>

class OpenGLTransitions;

/// Frames that are drawn by shaders, on the main thread, which only hands them over. Main thread.
class OpenGLSurface final : public QOpenGLWidget, public TransitionSurface {
    Q_OBJECT

public:
    explicit OpenGLSurface(QWidget* parent);
    ~OpenGLSurface() override;

    [[nodiscard]] QWidget& widget() override { return *this; }
    void showFrame(const TransitionFrame& frame) override;

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void letGo();

    std::unique_ptr<OpenGLTransitions> _transitions;
    std::optional<TransitionFrame> _frame;
};
