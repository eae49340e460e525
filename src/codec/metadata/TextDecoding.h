#pragma once

#include <QByteArrayView>
#include <QString>

namespace codec {

/// A text out of a file's metadata: UTF-8 where the bytes are that (a character that was cut at the
/// end is left out), else Windows-1252, which also reads Latin-1. What stands behind a NUL is left
/// out, as are control characters other than line breaks and tabulators, and white space at the
/// ends. Always valid, at most 32,768 characters long.
[[nodiscard]] QString decodeText(QByteArrayView bytes);

/// The same for UTF-16 without a byte order mark in the given order; a mark overrules it.
[[nodiscard]] QString decodeUtf16(QByteArrayView bytes, bool littleEndian);

/// A comment of EXIF: eight bytes that name the character set, then the text.
[[nodiscard]] QString decodeComment(QByteArrayView bytes, bool littleEndian);

} // namespace codec
