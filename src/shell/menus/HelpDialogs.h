#pragma once

class MainMenu;
class QWidget;

/// What the menu Help opens. The dialogs block nothing and delete themselves; one that is open
/// comes to the front. Main thread.
namespace HelpDialogs {

/// All commands that have a shortcut, menu by menu.
void showShortcuts(const MainMenu& menu, QWidget& window);
/// The program, its version and whom it has to thank.
void showAbout(QWidget& window);

} // namespace HelpDialogs
