#pragma once

#include <QStringList>

class QWidget;

/// Shows the files or folders in the desktop's file manager (see `platform::Workspace`); where
/// there is none, an alert of the widget's window says so. Returns at once. Main thread.
void revealFiles(QWidget& widget, const QStringList& paths);
