#include "core/FileTypes.h"

#include "platform/files/TypeIdentifiers.h"

#include <algorithm>

namespace PBUtilities {

QStringView pathExtension(QStringView path) {
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const QStringView name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1) : QStringView();
}

bool conformsToUTIArray(QStringView type, const QStringList& types) {
    return std::ranges::any_of(types, [type](const QString& other) {
        return platform::TypeIdentifiers::conformsTo(type, other);
    });
}

QString extentionToUTI(QStringView extension) {
    return platform::TypeIdentifiers::forExtension(extension);
}

} // namespace PBUtilities
