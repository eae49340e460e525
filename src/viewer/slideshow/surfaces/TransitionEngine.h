#pragma once

#include <QString>

#include <memory>

class QWidget;
class TransitionSurface;

/// Which way transitions are drawn.
struct TransitionEngine {
    bool isOpenGL = false;
    /// What draws with OpenGL, in the words of its driver; empty where no context can be had.
    QString renderer;
};

/// Shaders where a context can be had that a graphics processor draws for, else rows. Decided at
/// the first call, and the same from then on. A context that this machine's own processor would
/// draw for counts as none: it would do that on the main thread, and take longer for it.
/// The environment variable VELMORA_TRANSITIONS, with the value `opengl` or `raster`, decides
/// instead, as far as the machine allows. Main thread.
[[nodiscard]] const TransitionEngine& transitionEngine();

/// A surface of that engine, a child of the widget.
[[nodiscard]] TransitionSurface*
makeTransitionSurface(const TransitionEngine& engine, QWidget* parent);
