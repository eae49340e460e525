#pragma once

#include "group/GroupTypes.h"

#include <QIcon>

namespace Icons {

/// The symbol that stands for a criterion or a group: the program's own, and one for all folders
/// and one for all files where the system would be asked. Empty where there is none. Main thread.
[[nodiscard]] QIcon ofGroup(const group::IconName& icon);

} // namespace Icons
