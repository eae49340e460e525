#pragma once

#include <QStringList>

#include <functional>

/// What the desktop does for the program. Main thread; nothing here waits.
namespace platform::Workspace {

/// Shows the files or folders in the desktop's file manager, selected in the folders that hold
/// them; where no file manager takes that, opens the folder that holds the first. `failed` is
/// called, maybe at once, where no program opens folders either.
void revealInFileManager(const QStringList& paths, std::function<void()> failed);

} // namespace platform::Workspace
