#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <ostream>

/// Lets GoogleTest print Qt strings in its messages.
void PrintTo(const QString& text, std::ostream* stream);

namespace support {

/// Runs the event loop until the condition holds; false when the deadline passes first.
/// Main thread only.
[[nodiscard]] bool spinUntil(
    const std::function<bool()>& condition,
    std::chrono::milliseconds deadline = std::chrono::seconds(20));

/// Writes the bytes to the path, making the folders above it; aborts the test on failure.
void writeFile(const QString& path, const QByteArray& bytes);

/// The whole content of a file; empty if it can't be read.
[[nodiscard]] QByteArray readFile(const QString& path);

} // namespace support
