#pragma once

#include <QByteArray>

namespace formatpictures {

/// Numbers in the given byte order, for files made by hand.
struct ByteWriter {
    explicit ByteWriter(bool littleEndian) : _littleEndian(littleEndian) {}
    ByteWriter& u8(unsigned number) { return put(number, 1); }
    ByteWriter& u16(unsigned number) { return put(number, 2); }
    ByteWriter& u32(quint64 number) { return put(number, 4); }
    ByteWriter& u64(quint64 number) { return put(number, 8); }
    ByteWriter& text(const QByteArray& bytes) {
        _bytes += bytes;
        return *this;
    }
    [[nodiscard]] const QByteArray& bytes() const { return _bytes; }

private:
    ByteWriter& put(quint64 number, int size) {
        for (int position = 0; position < size; ++position) {
            const int shift = 8 * (_littleEndian ? position : size - 1 - position);
            _bytes += static_cast<char>(number >> shift & 0xFF);
        }
        return *this;
    }

    bool _littleEndian;
    QByteArray _bytes;
};

} // namespace formatpictures
