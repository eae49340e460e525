#pragma once

class MainMenu;
class QWidget;

/// What the menu Help opens. The dialogs block nothing and delete themselves; one that is open
/// comes to the front. Main thread.
namespace HelpDialogs {

/// All commands that have a shortcut, menu by menu, and what keys and wheel mean in the views.
/// `wheelZooms`: in the large view, where it goes to other photographs with Ctrl then.
void showShortcuts(const MainMenu& menu, bool wheelZooms, QWidget& window);
/// The program, its version and whom it has to thank.
void showAbout(QWidget& window);

} // namespace HelpDialogs
