#pragma once

#include "group/GroupTypes.h"

#include <QIcon>

namespace Icons {

/// The icon of a group or a criterion, in the program's own set: folders and files too, so that a
/// row of them has one look. Kept once it was asked for; empty for no icon. Main thread.
[[nodiscard]] const QIcon& forGroup(const group::IconName& icon);

} // namespace Icons
