#pragma once

#include <QString>

namespace PBUtilities {

/// The executable's name, for working folders.
[[nodiscard]] QString appName();

} // namespace PBUtilities
