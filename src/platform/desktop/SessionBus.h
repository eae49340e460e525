#pragma once

#include <QDBusConnection>

namespace platform {

/// The message bus of the user's session; not connected where there is none. (Asking the toolkit
/// for a bus that is not there may try to start one, which takes long.)
[[nodiscard]] QDBusConnection sessionBus();

} // namespace platform
