#include "core/FileTypes.h"

#include "core/Paths.h"
#include "platform/files/FileManager.h"
#include "platform/files/TypeIdentifiers.h"

#include <algorithm>
#include <span>

namespace PBUtilities {

namespace {

constexpr QStringView rawExtensions[] = {u"cr2", u"erf", u"fff", u"dcr", u"kdc", u"mos",  u"mfw",
                                         u"mef", u"raw", u"nef", u"orf", u"pef", u"arw",  u"sr2",
                                         u"srf", u"sti", u"3fr", u"rwl", u"crw", u"sraw", u"mrw",
                                         u"nrw", u"rw2", u"c3f", u"dng"};

constexpr QStringView writableTypes[] = {
    u"public.jpeg", u"public.tiff", u"public.png", u"com.adobe.photoshop-image"};

bool contains(std::span<const QStringView> list, QStringView text) {
    return std::ranges::any_of(
        list, [text](QStringView entry) { return entry.compare(text, Qt::CaseInsensitive) == 0; });
}

} // namespace

QStringView pathExtension(QStringView path) {
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const QStringView name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1) : QStringView();
}

bool isRawFile(QStringView path) {
    return contains(rawExtensions, pathExtension(path));
}

bool conformsToUTIArray(QStringView type, const QStringList& types) {
    return std::ranges::any_of(types, [type](const QString& other) {
        return platform::TypeIdentifiers::conformsTo(type, other);
    });
}

QString extentionToUTI(QStringView extension) {
    return platform::TypeIdentifiers::forExtension(extension);
}

bool isUTISupportMetadata(QStringView type) {
    return contains(writableTypes, type);
}

bool isPackageFile(const QString& path) {
    return platform::FileManager::isPackageName(path) && isFolder(path);
}

} // namespace PBUtilities
