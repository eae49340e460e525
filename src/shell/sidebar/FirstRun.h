#pragma once

#include <QString>

class PBImageBrowserTipView;
class SourceSidebar;

/// What an empty window offers to somebody who starts the program for the first time. Main thread.
namespace FirstRun {

/// The user's own folder for pictures, as the desktop has it; empty if there is none that could be
/// looked through.
[[nodiscard]] QString picturesFolder();

/// Has the tip offer the folder, and adds it when it is chosen. Both outlive each other's use.
void offerPictures(PBImageBrowserTipView& tip, SourceSidebar& sidebar);

} // namespace FirstRun
