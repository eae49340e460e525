#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

/// What a path's extension says of the file. Extensions and type identifiers compare without regard
/// to case. Any thread.
namespace PBUtilities {

/// The extension of the path's last part, without its dot; empty for a name without one, such as
/// "README" or ".hidden".
[[nodiscard]] QStringView pathExtension(QStringView path);

/// The type identifier conforms to at least one of the array; false for an empty array.
[[nodiscard]] bool conformsToUTIArray(QStringView type, const QStringList& types);
/// The preferred type identifier of a file extension (without its dot); empty when unknown.
[[nodiscard]] QString extentionToUTI(QStringView extension);

} // namespace PBUtilities
