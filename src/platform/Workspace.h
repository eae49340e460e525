#pragma once

#include <QString>

/// What the desktop does for the program. Main thread; nothing here waits.
namespace platform::Workspace {

/// Shows the file or folder in the desktop's file manager, selected in the folder that holds it;
/// where no file manager takes that, opens the folder that holds it.
void revealInFileManager(const QString& path);

} // namespace platform::Workspace
