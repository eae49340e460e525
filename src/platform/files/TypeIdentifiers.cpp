#include "platform/files/TypeIdentifiers.h"

#include "platform/program/LocalizedTexts.h"

#include <QHash>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace platform::TypeIdentifiers {

namespace {

struct Type {
    QStringView identifier;
    /// The kinds that it belongs to directly, separated by blanks.
    QStringView parents;
    /// Separated by blanks, the preferred one first; an abstract kind has none.
    QStringView extensions;
    QStringView mimeType;
};

constexpr QStringView raw = cameraRawImage;

constexpr Type types[] = {
    {u"public.jpeg", image, u"jpg jpeg jpe jfif jif jfi", u"image/jpeg"},
    {u"public.png", image, u"png apng", u"image/png"},
    {u"com.compuserve.gif", image, u"gif", u"image/gif"},
    {u"public.tiff", image, u"tif tiff btf tf8", u"image/tiff"},
    {u"com.microsoft.bmp", image, u"bmp dib", u"image/bmp"},
    {u"org.webmproject.webp", image, u"webp", u"image/webp"},
    {u"public.heic", image, u"heic heics hif", u"image/heic"},
    {u"public.heif", image, u"heif heifs", u"image/heif"},
    {u"public.avif", image, u"avif avifs", u"image/avif"},
    {u"public.jpeg-xl", image, u"jxl", u"image/jxl"},
    {u"public.jpeg-2000", image, u"jp2 j2k jpf jpx j2c jpc jpt", u"image/jp2"},
    {u"com.adobe.photoshop-image", image, u"psd", u"image/vnd.adobe.photoshop"},
    {u"com.adobe.photoshop-large-image", image, u"psb", u"image/vnd.adobe.photoshop"},
    {u"com.microsoft.ico", image, u"ico", u"image/vnd.microsoft.icon"},
    {u"com.microsoft.cur", image, u"cur", u"image/x-win-bitmap"},
    {u"com.truevision.tga-image", image, u"tga targa tpic icb vda vst", u"image/x-tga"},
    {u"public.pbm", image, u"pbm", u"image/x-portable-bitmap"},
    {u"public.pgm", image, u"pgm", u"image/x-portable-graymap"},
    {u"public.ppm", image, u"ppm", u"image/x-portable-pixmap"},
    {u"public.pnm", image, u"pnm", u"image/x-portable-anymap"},
    {u"public.pam", image, u"pam", u"image/x-portable-arbitrarymap"},
    {multiPicture, image, u"mpo", u"image/mpo"},

    {u"com.adobe.raw-image", raw, u"dng", u"image/x-adobe-dng"},
    {u"com.canon.cr2-raw-image", raw, u"cr2", u"image/x-canon-cr2"},
    {u"com.canon.cr3-raw-image", raw, u"cr3", u"image/x-canon-cr3"},
    {u"com.canon.crw-raw-image", raw, u"crw", u"image/x-canon-crw"},
    {u"com.canon.sraw-raw-image", raw, u"sraw", u"image/x-dcraw"},
    {u"com.epson.raw-image", raw, u"erf", u"image/x-epson-erf"},
    {u"com.hasselblad.fff-raw-image", raw, u"fff", u"image/x-hasselblad-fff"},
    {u"com.hasselblad.3fr-raw-image", raw, u"3fr", u"image/x-hasselblad-3fr"},
    {u"com.kodak.raw-image", raw, u"dcr", u"image/x-kodak-dcr"},
    {u"com.kodak.kdc-raw-image", raw, u"kdc", u"image/x-kodak-kdc"},
    {u"com.kodak.k25-raw-image", raw, u"k25", u"image/x-kodak-k25"},
    {u"com.kodak.dcs-raw-image", raw, u"dcs", u"image/x-dcraw"},
    {u"com.kodak.drf-raw-image", raw, u"drf", u"image/x-dcraw"},
    {u"com.leafamerica.raw-image", raw, u"mos", u"image/x-leaf-mos"},
    {u"com.mamiya.mfw-raw-image", raw, u"mfw", u"image/x-dcraw"},
    {u"com.mamiya.raw-image", raw, u"mef", u"image/x-mamiya-mef"},
    {u"com.panasonic.raw-image", raw, u"raw", u"image/x-panasonic-rw"},
    {u"com.panasonic.rw2-raw-image", raw, u"rw2", u"image/x-panasonic-rw2"},
    {u"com.leica.rwl-raw-image", raw, u"rwl", u"image/x-leica-rwl"},
    {u"com.nikon.raw-image", raw, u"nef", u"image/x-nikon-nef"},
    {u"com.nikon.nrw-raw-image", raw, u"nrw", u"image/x-nikon-nrw"},
    {u"com.olympus.raw-image", raw, u"orf", u"image/x-olympus-orf"},
    {u"com.pentax.raw-image", raw, u"pef", u"image/x-pentax-pef"},
    {u"com.pentax.ptx-raw-image", raw, u"ptx", u"image/x-dcraw"},
    {u"com.sony.arw-raw-image", raw, u"arw", u"image/x-sony-arw"},
    {u"com.sony.sr2-raw-image", raw, u"sr2", u"image/x-sony-sr2"},
    {u"com.sony.raw-image", raw, u"srf", u"image/x-sony-srf"},
    {u"com.sinar.sti-raw-image", raw, u"sti", u"image/x-dcraw"},
    {u"com.sinar.cs1-raw-image", raw, u"cs1", u"image/x-dcraw"},
    {u"com.konicaminolta.raw-image", raw, u"mrw", u"image/x-minolta-mrw"},
    {u"com.minolta.mdc-raw-image", raw, u"mdc", u"image/x-dcraw"},
    {u"com.sigma.c3f-raw-image", raw, u"c3f", u"image/x-dcraw"},
    {u"com.sigma.raw-image", raw, u"x3f", u"image/x-sigma-x3f"},
    {u"com.fuji.raw-image", raw, u"raf", u"image/x-fuji-raf"},
    {u"com.samsung.raw-image", raw, u"srw", u"image/x-samsung-srw"},
    {u"com.phaseone.raw-image", raw, u"iiq", u"image/x-phaseone-iiq"},
    {u"com.phaseone.cap-raw-image", raw, u"cap", u"image/x-dcraw"},
    {u"com.gopro.raw-image", raw, u"gpr", u"image/x-gopro-gpr"},
    {u"com.casio.raw-image", raw, u"bay", u"image/x-dcraw"},
    {u"com.nucore.raw-image", raw, u"bmq", u"image/x-dcraw"},
    {u"com.logitech.raw-image", raw, u"pxn", u"image/x-dcraw"},
    {u"com.apple.quicktake-raw-image", raw, u"qtk", u"image/x-dcraw"},
    {u"com.arri.raw-image", raw, u"ari", u"image/x-dcraw"},
    {u"com.rawzor.raw-image", raw, u"rwz", u"image/x-dcraw"},

    {cameraRawImage, image, u"", u""},
    {image, u"public.data public.content", u"", u""},
    {u"public.data", u"public.item", u"", u""},
    {u"public.content", u"", u"", u""},
    {u"public.item", u"", u"", u""},
};

/// Positions in `types` by identifier and by extension, both in small letters.
struct Index {
    QHash<QString, std::size_t> byIdentifier;
    QHash<QString, std::size_t> byExtension;

    Index() {
        for (std::size_t position = 0; position < std::size(types); ++position) {
            const Type& type = types[position];
            byIdentifier.insert(type.identifier.toString().toLower(), position);
            for (const QStringView extension : type.extensions.split(u' ', Qt::SkipEmptyParts)) {
                byExtension.insert(extension.toString(), position);
            }
        }
    }
};

const Type* find(const QHash<QString, std::size_t>& positions, QStringView key) {
    const auto found = positions.constFind(key.toString().toLower());
    return found == positions.cend() ? nullptr : &types[*found];
}

const Index& index() {
    static const Index made;
    return made;
}

const Type* typeOf(QStringView identifier) {
    return find(index().byIdentifier, identifier);
}

} // namespace

QString forExtension(QStringView extension) {
    const Type* type = find(index().byExtension, extension);
    return type ? type->identifier.toString() : QString();
}

bool equal(QStringView type, QStringView other) {
    return !type.isEmpty() && type.compare(other, Qt::CaseInsensitive) == 0;
}

bool conformsTo(QStringView type, QStringView other) {
    if (equal(type, other)) return true;
    const Type* known = typeOf(type);
    if (!known) return false;
    const auto parents = known->parents.split(u' ', Qt::SkipEmptyParts);
    return std::ranges::any_of(
        parents, [other](QStringView parent) { return conformsTo(parent, other); });
}

QStringList all() {
    QStringList identifiers;
    for (const Type& type : types) {
        if (!type.extensions.isEmpty()) identifiers.append(type.identifier.toString());
    }
    return identifiers;
}

QString description(QStringView type) {
    const Type* known = typeOf(type);
    return known ? localizedString(known->identifier) : QString();
}

QString mimeType(QStringView type) {
    const Type* known = typeOf(type);
    return known ? known->mimeType.toString() : QString();
}

QString preferredExtension(QStringView type) {
    const Type* known = typeOf(type);
    return known ? known->extensions.split(u' ').first().toString() : QString();
}

} // namespace platform::TypeIdentifiers
