#include "fileactions/NameToGive.h"

#include "platform/files/TypeIdentifiers.h"

#include <QMimeDatabase>

namespace fileactions {

namespace {

struct NameParts {
    QString base;
    QString extension; ///< with its dot; that alone, where nothing follows it
};

NameParts partsOf(const QString& name) {
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0) return {name, {}};
    return {name.first(dot), name.sliced(dot)};
}

bool isSameType(const QString& extension, const QString& other) {
    const auto type = [](const QString& of) {
        return platform::TypeIdentifiers::forExtension(QStringView(of).sliced(1));
    };
    return extension.compare(other, Qt::CaseInsensitive) == 0 ||
           platform::TypeIdentifiers::equal(type(extension), type(other));
}

bool isKnown(const QString& extension, const QString& former) {
    if (isSameType(extension, former)) return true;
    if (!platform::TypeIdentifiers::forExtension(QStringView(extension).sliced(1)).isEmpty())
        return true;
    return !QMimeDatabase().mimeTypesForFileName(u'x' + extension).isEmpty();
}

} // namespace

NameToGive nameToGive(const QString& typed, const QString& formerName) {
    using Doubt = NameToGive::Doubt;
    if (typed == formerName) return {.name = formerName, .nameOfSameType = {}};
    NameToGive result{.name = typed.trimmed(), .nameOfSameType = {}};
    const QString former = partsOf(formerName).extension;
    const bool isFolderName = result.name == QStringView(u".") || result.name == QStringView(u"..");
    if (result.name.isEmpty() || isFolderName) return result;
    if (!former.isEmpty()) {
        const NameParts parts = partsOf(result.name);
        if (parts.extension == QStringView(u".")) {
            result.doubt = Doubt::NoType;
            result.nameOfSameType = parts.base + former;
        } else if (parts.extension.isEmpty() || !isKnown(parts.extension, former)) {
            result.name += former;
        } else if (!isSameType(parts.extension, former)) {
            result.doubt = Doubt::OtherType;
            result.nameOfSameType = parts.base + former;
        }
    }
    result.isHidden = result.name.startsWith(u'.') && !formerName.startsWith(u'.');
    return result;
}

} // namespace fileactions
