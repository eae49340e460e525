#include "formatpictures/Encoders.h"
#include "formatpictures/Samples.h"

#include <QBuffer>

#include <algorithm>
#include <tuple>

namespace formatpictures {

QByteArray icon(const std::vector<IconEntry>& entries) {
    ByteWriter head(true);
    head.u16(0).u16(1).u16(static_cast<unsigned>(entries.size()));
    QByteArray contents;
    for (const auto& [image, bits] : entries) {
        const int width = image.width();
        const int height = image.height();
        ByteWriter content(true);
        if (bits == 0) {
            QBuffer buffer;
            image.save(&buffer, "PNG");
            content.text(buffer.data());
        } else {
            content.u32(40)
                .u32(unsigned(width))
                .u32(unsigned(height * 2))
                .u16(1)
                .u16(unsigned(bits));
            content.text(QByteArray(24, '\0'));
            // The palette of 8 bits: three of red and green, two of blue.
            for (unsigned index = 0; bits == 8 && index < 256; ++index) {
                content.u8((index & 3) * 85).u8((index >> 2 & 7) * 255 / 7);
                content.u8((index >> 5) * 255 / 7).u8(0);
            }
            for (int y = height - 1; y >= 0; --y) {
                for (int x = 0; x < width; ++x) {
                    const QRgb pixel = image.pixel(x, y);
                    if (bits == 32)
                        content.u32(pixel);
                    else
                        content.u8(static_cast<unsigned>(
                            qRed(pixel) >> 5 << 5 | qGreen(pixel) >> 5 << 2 | qBlue(pixel) >> 6));
                }
                for (int x = width; bits == 8 && x % 4 != 0; ++x)
                    content.u8(0);
            }
            // The mask hides the leftmost eight columns of 8-bit entries.
            for (int y = 0; y < height; ++y)
                for (int byte = 0; byte < (width + 31) / 32 * 4; ++byte)
                    content.u8(bits == 8 && byte == 0 ? 0xFF : 0);
        }
        head.u8(static_cast<unsigned>(width % 256)).u8(static_cast<unsigned>(height % 256));
        head.u16(0).u16(1).u16(static_cast<unsigned>(bits == 0 ? 32 : bits));
        head.u32(static_cast<quint64>(content.bytes().size()));
        head.u32(6 + 16 * entries.size() + static_cast<quint64>(contents.size()));
        contents += content.bytes();
    }
    return head.bytes() + contents;
}

QByteArray tga(const QImage& image, int bits, bool hasRuns, bool isTopDown, bool isRightToLeft) {
    const auto width = static_cast<unsigned>(image.width());
    const auto height = static_cast<unsigned>(image.height());
    ByteWriter file(true);
    file.u8(3).u8(0).u8(hasRuns ? 10 : 2).u16(0).u16(0).u8(0).u16(0).u16(0);
    file.u16(width).u16(height).u8(static_cast<unsigned>(bits));
    file.u8((bits == 32 ? 8U : 0U) | (isRightToLeft ? 16U : 0U) | (isTopDown ? 32U : 0U));
    file.text("id.");
    const auto pixelAt = [&](unsigned index) {
        const auto column = static_cast<int>(index % width);
        const auto row = static_cast<int>(index / width);
        return image.pixel(
            isRightToLeft ? image.width() - 1 - column : column,
            isTopDown ? row : image.height() - 1 - row);
    };
    const auto put = [&](QRgb pixel) {
        for (int shift = 0; shift < bits; shift += 8)
            file.u8(pixel >> shift & 0xFF);
    };
    for (unsigned index = 0; index < width * height;) {
        if (!hasRuns) {
            put(pixelAt(index++));
            continue;
        }
        // Packets go on from row to row, as old encoders let them.
        unsigned run = 1;
        while (run < 128 && index + run < width * height && pixelAt(index + run) == pixelAt(index))
            ++run;
        if (run > 1) {
            file.u8(127 + run);
            put(pixelAt(index));
            index += run;
        } else {
            // The longest that the format has, too.
            const unsigned wanted = index % 2 == 0 ? 128 : 7;
            const unsigned count = std::min(wanted, width * height - index);
            file.u8(count - 1);
            for (unsigned step = 0; step < count; ++step)
                put(pixelAt(index++));
        }
    }
    return file.bytes();
}

namespace {

/// Runs where three bytes are the same, literals else.
QByteArray packed(const QByteArray& row) {
    QByteArray result;
    for (qsizetype at = 0; at < row.size();) {
        qsizetype run = 1;
        while (run < 128 && at + run < row.size() && row[at + run] == row[at])
            ++run;
        if (run >= 2) {
            result += static_cast<char>(1 - run);
            result += row[at];
            at += run;
        } else {
            const qsizetype count = std::min<qsizetype>(at % 2 == 0 ? 128 : 5, row.size() - at);
            result += static_cast<char>(count - 1);
            result += row.mid(at, count);
            at += count;
        }
    }
    return result;
}

} // namespace

QByteArray psd(const QImage& image, PsdMode mode, int depth, bool hasRuns) {
    const bool hasAlpha = mode == PsdMode::Rgb && image.hasAlphaChannel();
    const unsigned channels = mode == PsdMode::Gray ? 1 : mode == PsdMode::Cmyk || hasAlpha ? 4 : 3;
    ByteWriter file(false);
    file.text("8BPS").u16(1).u16(0).u32(0).u16(channels);
    file.u32(static_cast<quint64>(image.height())).u32(static_cast<quint64>(image.width()));
    file.u16(static_cast<unsigned>(depth)).u16(static_cast<unsigned>(mode));
    // No palette; one resource with a name and content of odd length; no layer but the picture.
    file.u32(0).u32(16).text("8BIM").u16(1005).u8(1).text("x").u32(3).text("abc\0").u8(0);
    hasAlpha ? file.u32(8).u32(4).u16(0xFFFF).u16(0) : file.u32(0);
    file.u16(hasRuns ? 1 : 0);
    QByteArray pixels;
    for (unsigned channel = 0; channel < channels; ++channel) {
        for (int y = 0; y < image.height(); ++y) {
            ByteWriter row(false);
            for (int x = 0; x < image.width(); ++x)
                put(row, modeSamples(image.pixel(x, y), mode, depth)[channel], depth);
            const QByteArray bytes = hasRuns ? packed(row.bytes()) : row.bytes();
            if (hasRuns) file.u16(static_cast<unsigned>(bytes.size()));
            pixels += bytes;
        }
    }
    return file.text(pixels).bytes();
}

QByteArray dng() {
    using Entry = std::tuple<unsigned, unsigned, unsigned, QByteArray>; // tag, type, count, value
    const auto number = [](quint64 value) { return ByteWriter(true).u32(value).bytes(); };
    ByteWriter matrix(true);
    for (int position = 0; position < 9; ++position)
        matrix.u32(position % 4 == 0 ? 1 : 0).u32(1);
    constexpr unsigned pixelsAt = 1024;
    const Entry entries[] = {
        {254, 4, 1, number(0)},
        {256, 4, 1, number(64)},
        {257, 4, 1, number(48)},
        {258, 3, 1, number(16)},
        {259, 3, 1, number(1)},
        {262, 3, 1, number(32803)}, // a colour filter array
        {271, 2, 6, QByteArray("Maker", 6)},
        {272, 2, 4, QByteArray("Cam", 4)},
        {273, 4, 1, number(pixelsAt)},
        {274, 3, 1, number(6)},
        {277, 3, 1, number(1)},
        {278, 4, 1, number(48)},
        {279, 4, 1, number(64 * 48 * 2)},
        {33421, 3, 2, ByteWriter(true).u16(2).u16(2).bytes()},
        {33422, 1, 4, QByteArray("\0\1\1\2", 4)},
        {33434, 5, 1, ByteWriter(true).u32(1).u32(250).bytes()},
        {34855, 3, 1, number(200)},
        {36867, 2, 20, QByteArray("2010:07:01 12:00:00", 20)},
        {50706, 1, 4, QByteArray("\1\4\0\0", 4)},
        {50708, 2, 4, QByteArray("Cam", 4)},
        {50721, 10, 9, matrix.bytes()}};
    ByteWriter file(true);
    QByteArray values;
    file.text("II").u16(42).u32(8).u16(static_cast<unsigned>(std::size(entries)));
    const qsizetype valuesAt = 8 + 2 + std::ssize(entries) * 12 + 4;
    for (const auto& [tag, type, count, value] : entries) {
        file.u16(tag).u16(type).u32(count);
        if (value.size() <= 4) {
            file.text(value);
        } else {
            file.u32(static_cast<quint64>(valuesAt + values.size()));
            values += value;
        }
    }
    file.u32(0).text(values);
    const QByteArray head = file.bytes();
    return head + QByteArray(pixelsAt - head.size() + 64 * 48 * 2, '\x20');
}

} // namespace formatpictures
