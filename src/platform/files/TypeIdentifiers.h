#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

/// The kinds of picture files: one table of type identifiers with their file name extensions, MIME
/// type and conformance. A file's extension decides its kind; nothing here looks into a file.
/// Identifiers and extensions compare without regard to case. Any thread.
namespace platform::TypeIdentifiers {

/// The kind that every picture format conforms to.
inline constexpr QStringView image = u"public.image";
/// The kind that every camera raw format conforms to; it conforms to `image` itself.
inline constexpr QStringView cameraRawImage = u"public.camera-raw-image";
/// Several pictures in one file; conforms to `image`, but no importer takes it.
inline constexpr QStringView multiPicture = u"public.mpo-image";

/// The identifier of the format that files with this extension (without its dot) have; empty when
/// the extension is unknown.
[[nodiscard]] QString forExtension(QStringView extension);

/// Whether `type` is `other`, or one of the kinds that `type` belongs to is. An identifier that is
/// not in the table conforms to itself only; the empty one to nothing.
[[nodiscard]] bool conformsTo(QStringView type, QStringView other);

/// The same identifier; two empty ones are not equal to each other.
[[nodiscard]] bool equal(QStringView type, QStringView other);

/// The identifiers of all formats in the table's order: what a file can be. The abstract kinds,
/// such as `image` and `cameraRawImage`, are not among them; `multiPicture` is.
[[nodiscard]] QStringList all();

/// The localised name of the format for the user, such as "JPEG image"; empty when unknown.
[[nodiscard]] QString description(QStringView type);

/// Such as "image/jpeg"; empty when unknown or abstract.
[[nodiscard]] QString mimeType(QStringView type);

/// The extension (without its dot, in small letters) that a new file of this format gets; empty
/// when unknown or abstract.
[[nodiscard]] QString preferredExtension(QStringView type);

} // namespace platform::TypeIdentifiers
