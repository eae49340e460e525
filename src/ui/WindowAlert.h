#pragma once

#include <QString>

#include <functional>

class QWidget;

/// Tells the user something in a dialog that blocks this window only, and returns at once; calls
/// back when it is closed. Plain text. Main thread.
void showWindowAlert(
    QWidget& window, const QString& message, const QString& details = {},
    std::function<void()> closed = {});

/// A question that is answered by going on or by leaving all as it is. Plain text.
struct WindowQuestion {
    QString message;
    QString details;
    QString consent; ///< the text of the button that goes on
    QString other;   ///< of a second one, that goes on in another way; empty for none
};

enum class WindowAnswer { Cancel, Consent, Other };

/// Asks the user in a dialog that blocks this window only, and returns at once; calls back with the
/// answer, which is to cancel where the dialog is closed; so it is with the Return key. Main
/// thread.
void askInWindow(
    QWidget& window, const WindowQuestion& question, std::function<void(WindowAnswer)> answered);
