#pragma once

#include <vector>

class QWidget;

/// The keyboard's way through the panes of a window. Those that are out of sight, disabled or have
/// nothing that takes keys are left out. Main thread.
namespace PaneFocus {

/// The keyboard goes to the pane after the one that has it, or before it; past the last comes the
/// first again.
void moveTo(const std::vector<QWidget*>& panes, bool backwards);

/// Tab goes through the widgets in this order.
void setTabOrder(const std::vector<QWidget*>& widgets);

} // namespace PaneFocus
