#pragma once

class MainMenu;
class PBImageBrowserView;

/// Connects the commands that select photographs of the browser, those in folded groups too. Both
/// outlive the window. Main thread.
void connectSelection(MainMenu& menu, PBImageBrowserView& view);
