#include "core/Application.h"

namespace PBUtilities {

QString appName() {
    return QStringLiteral("velmora");
}

bool startAccessingSecurityScopedResource(const QUrl&) {
    return true;
}

void stopAccessingSecurityScopedResource(const QUrl&) {}

} // namespace PBUtilities
