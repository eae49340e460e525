#pragma once

#include <QString>

namespace PBUtilities {

/// The application's id on the desktop: the name of its desktop file and of its icon, of its
/// windows on Wayland, and its name on the message bus.
[[nodiscard]] QString applicationId();

} // namespace PBUtilities
