#include "core/Application.h"

namespace PBUtilities {

QString appName() {
    return QStringLiteral("velmora");
}

QString applicationId() {
    return QStringLiteral("org.velmora.Velmora");
}

} // namespace PBUtilities
