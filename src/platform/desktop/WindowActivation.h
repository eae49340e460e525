#pragma once

#include <QByteArray>

class QWindow;

namespace platform {

/// What a desktop hands to whom the user has called, so that it may take the keys: without it, a
/// window that comes to the front is held for one that disturbs the user. Empty where there is
/// none.
struct Activation {
    QByteArray startupId; ///< of X11's startup notification
    QByteArray token;     ///< of Wayland's activation protocol
    [[nodiscard]] bool operator==(const Activation&) const = default;
};

/// That of the start of this process. Before there is an application object, which takes it.
[[nodiscard]] Activation activationOfStart();

/// Brings a window that is shown to the front, and tells the desktop that the call has arrived.
/// Main thread.
void bringToFront(QWindow& window, const Activation& activation);

/// What this process was started with, or was handed last, has been used: it is no business of the
/// programs that this one starts. Main thread, once a window is shown.
void forgetActivation();

/// The user's time in such an id, in milliseconds of the X server; 0 where there is none.
[[nodiscard]] quint32 timeOfStartupId(const QByteArray& startupId);

} // namespace platform
