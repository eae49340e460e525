#pragma once

#include "platform/values/PBValue.h"

#include <QString>
#include <QStringView>

#include <optional>

/// Small operations on texts. Any thread.
namespace PBUtilities {

/// A file size for the user in bytes, KB, MB or GB by powers of 1024, through the localised formats
/// "FileSize_Bytes" to "FileSize_GB".
[[nodiscard]] QString stringWithFileSize(quint64 size);

/// Each newline character (line feed, carriage return, vertical tab, form feed, next line, line and
/// paragraph separator) becomes one blank.
[[nodiscard]] QString removeNewline(const QString& text);

/// Nothing is left after trimming white space and newlines.
[[nodiscard]] bool isEmptyOrWhitespace(QStringView text);

/// The instant of a date as cameras write it, "yyyy:MM:dd HH:mm:ss" exactly, in the system's time
/// zone; nothing if it does not parse or there is no such date. A time that the spring change skips
/// counts on from before the change.
[[nodiscard]] std::optional<PBDate> exifDate(QStringView text);

} // namespace PBUtilities
