#include "core/Application.h"

namespace PBUtilities {

QString appName() {
    return QStringLiteral("velmora");
}

} // namespace PBUtilities
