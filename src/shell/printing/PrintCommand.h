#pragma once

#include "shell/printing/PrintPage.h"

#include <vector>

class ChosenPhotographs;
class MainMenu;
class PBImageImporterManager;
class QWidget;

namespace group {
class FolderPaths;
}

/// Connects the command that prints what is chosen. All outlive the window. Main thread.
struct PrintCommandParts {
    MainMenu& menu;
    const ChosenPhotographs& chosen;
    const group::FolderPaths& folderPaths;
    PBImageImporterManager& importers;
    QWidget& window;
};
void connectPrinting(const PrintCommandParts& parts);
