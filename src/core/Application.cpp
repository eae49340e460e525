#include "core/Application.h"

namespace PBUtilities {

QString applicationId() {
    return QStringLiteral("org.velmora.Velmora");
}

} // namespace PBUtilities
