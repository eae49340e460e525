#pragma once

#include <QString>
#include <QUrl>

namespace PBUtilities {

/// The executable's name, for working folders.
[[nodiscard]] QString appName();

/// Access to a place outside of a sandbox lasts from start to stop. There is no such thing to ask
/// for on this platform: the user's rights are the program's, so starting always succeeds.
[[nodiscard]] bool startAccessingSecurityScopedResource(const QUrl& url);
void stopAccessingSecurityScopedResource(const QUrl& url);

} // namespace PBUtilities
