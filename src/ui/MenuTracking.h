#pragma once

class QMenu;

/// While the menu is on show, what it was opened for stays: no tree is exchanged under it. Once for
/// each menu, before it is shown. Main thread.
void keepContentsWhileShown(QMenu& menu);
