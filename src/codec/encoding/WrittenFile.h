#pragma once

#include <QByteArray>

#include <cstring>
#include <exception>

namespace codec::encoders {

/// What a library of C writes, which may seek back to fill in lengths.
struct WrittenFile {
    QByteArray bytes;
    qsizetype position = 0;

    /// At the position, behind zeros where that is beyond the end. False when there is no memory:
    /// nothing may be thrown through the library.
    [[nodiscard]] bool write(const void* source, qsizetype length) noexcept {
        try {
            if (position > bytes.size()) bytes.append(position - bytes.size(), '\0');
            const qsizetype end = position + length;
            if (end > bytes.size()) bytes.resize(end);
            std::memcpy(bytes.data() + position, source, static_cast<std::size_t>(length));
            position = end;
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }
};

} // namespace codec::encoders
