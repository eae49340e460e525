#pragma once

#include <QString>

#include <functional>

class QWidget;

/// Tells the user something in a dialog that blocks this window only, and returns at once. Plain
/// text. Main thread.
void showWindowAlert(QWidget& window, const QString& message, const QString& details = {});

/// A question that is answered by going on or by leaving all as it is. Plain text.
struct WindowQuestion {
    QString message;
    QString details;
    QString consent; ///< the text of the button that goes on
};

/// Asks the user in a dialog that blocks this window only, and returns at once; calls back with the
/// answer, which is no where the dialog is closed; so it is with the Return key. Main thread.
void askInWindow(
    QWidget& window, const WindowQuestion& question, std::function<void(bool goesOn)> answered);
