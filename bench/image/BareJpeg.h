#pragma once

#include <QByteArray>
#include <QImage>

namespace bench {

/// The floor of every decode of a JPEG: the library alone, from bytes in memory to 32-bit pixels of
/// new memory, reduced by the library to so many eighths.
[[nodiscard]] QImage decodeBare(const QByteArray& file, unsigned eighths);

/// The library's encoder at quality 50. Answers the bytes written.
[[nodiscard]] qsizetype encodeBare(const QImage& image);

} // namespace bench
