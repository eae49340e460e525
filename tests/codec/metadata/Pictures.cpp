#include "codec/metadata/Pictures.h"

#include "codec/metadata/ImageProperties.h"
#include "support/Images.h"

#include <QBuffer>

#include <sys/mman.h>

namespace pictures {

QByteArray saved(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format)) qFatal("no writer for %s", format);
    return bytes;
}

QByteArray jpeg() {
    QImage image = support::filled({40, 30}, Qt::darkGreen);
    image.setDotsPerMeterX(0);
    image.setDotsPerMeterY(0);
    return saved(image, "JPEG");
}

QByteArray withMetadata(const QByteArray& picture, const Writer& writer) {
    codec::prepareImageProperties();
    const Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(
        reinterpret_cast<const Exiv2::byte*>(picture.data()), picture.size());
    image->readMetadata();
    writer(image->exifData(), image->iptcData(), image->xmpData());
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    return {reinterpret_cast<const char*>(io.mmap()), static_cast<qsizetype>(io.size())};
}

codec::process::Descriptor fileOf(const QByteArray& bytes, qint64 size) {
    codec::process::Descriptor file(memfd_create("picture", MFD_CLOEXEC));
    if (write(file.get(), bytes.data(), static_cast<std::size_t>(bytes.size())) != bytes.size() ||
        ftruncate(file.get(), std::max<qint64>(size, bytes.size())) != 0)
        qFatal("a picture could not be written to memory");
    return file;
}

std::optional<PBDictionary>
propertiesOf(const QByteArray& bytes, const QString& type, std::size_t frame) {
    return codec::readImageProperties(fileOf(bytes).get(), type, frame);
}

QString entry(const std::optional<PBDictionary>& properties, const QString& path) {
    if (!properties) return {};
    const QString name = u'{' + path.section(u'.', 0, 0) + u'}';
    const PBDictionary* entries =
        name == u"{}" ? &*properties : valueForKey(*properties, name).dictionary();
    return entries ? valueForKey(*entries, path.section(u'.', 1)).toText() : QString();
}

QByteArray box(const char* name, const QByteArray& content) {
    return ByteWriter(false).u32(static_cast<quint64>(content.size()) + 8).text(name).bytes() +
           content;
}

QByteArray heif(const QList<QByteArray>& properties) {
    QByteArray container = box("ispe", ByteWriter(false).u32(0).u32(4000).u32(3000).bytes());
    ByteWriter association(false);
    association.u32(0).u32(1).u16(7).u8(static_cast<unsigned>(properties.size()) + 1).u8(1);
    for (qsizetype position = 0; position < properties.size(); ++position) {
        container += properties[position];
        association.u8(static_cast<unsigned>(position) + 2);
    }
    const QByteArray meta = ByteWriter(false).u32(0).bytes() +
                            box("pitm", ByteWriter(false).u32(0).u16(7).bytes()) +
                            box("iprp", box("ipco", container) + box("ipma", association.bytes()));
    return box("ftyp", "heic" + QByteArray(4, '\0') + "mif1heic") + box("meta", meta);
}

void writeDirectory(
    ByteWriter& file, bool isBig, std::span<const TiffEntry> entries, quint64 next) {
    const auto number = [&](quint64 value) { isBig ? file.u64(value) : file.u32(value); };
    isBig ? file.u64(entries.size()) : file.u16(static_cast<unsigned>(entries.size()));
    for (const auto& [tag, type, count, value] : entries) {
        file.u16(tag).u16(type);
        number(count);
        // A short stands at the start of its field.
        if (type == 3) file.u16(static_cast<unsigned>(value)).u16(0);
        if (type == 4) file.u32(value);
        if (type == 5) number(value);
        if (isBig && type != 5) file.u32(0);
    }
    number(next);
}

QByteArray tiff(bool big, quint64 stripAt) {
    ByteWriter file(!big);
    constexpr unsigned count = 9;
    const quint64 valuesAt = big ? 16 + 8 + count * 20 + 8 : 8 + 2 + count * 12 + 4;
    file.text(big ? "MM" : "II").u16(big ? 43 : 42);
    big ? file.u16(8).u16(0).u64(16) : file.u32(8);
    const quint64 resolution = big ? quint64(300) << 32 | 1 : valuesAt;
    const TiffEntry entries[] = {
        {256, 4, 1, 40},   {257, 4, 1, 30},         {258, 3, 1, 16},
        {259, 3, 1, 1},    {262, 3, 1, 1},          {273, 4, 1, stripAt},
        {279, 4, 1, 2400}, {282, 5, 1, resolution}, {0x8769, 4, 1, valuesAt + 8}};
    writeDirectory(file, big, entries);
    big ? file.u64(0) : file.u32(300).u32(1);
    // The EXIF directory with one tag: a focal length of 35 mm in 35 mm film.
    writeDirectory(file, big, std::array{TiffEntry{0xA405, 3, 1, 35}});
    return file.bytes();
}

} // namespace pictures
