#pragma once

class Preferences;

/// Uses the language that the user prefers, else that of the desktop, for the program's texts and
/// for those of the toolkit's own dialogs. Once, before anything is shown. Main thread.
void useTextLanguage(const Preferences& preferences);
