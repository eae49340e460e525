#pragma once

#include <QString>

class QWidget;

/// Tells the user something in a dialog that blocks this window only, and returns at once. Plain
/// text. Main thread.
void showWindowAlert(QWidget& window, const QString& message, const QString& details = {});
