#include "codec/metadata/Pictures.h"

#include "codec/metadata/ImageProperties.h"

#include <QBuffer>
#include <QImage>

#include <sys/mman.h>
#include <unistd.h>

namespace pictures {

QByteArray saved(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format)) qFatal("no writer for %s", format);
    return bytes;
}

QByteArray jpeg() {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
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
    io.open();
    const Exiv2::DataBuf bytes = io.read(static_cast<long>(io.size()));
    return {reinterpret_cast<const char*>(bytes.pData_), bytes.size_};
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

QByteArray tiff(bool big, quint64 stripAt) {
    ByteWriter file(!big);
    const auto entry = [&](unsigned tag, unsigned type, quint64 value) {
        file.u16(tag).u16(type);
        big ? file.u64(1) : file.u32(1);
        // A short stands at the start of its field.
        type == 3           ? file.u16(unsigned(value)).u16(0)
        : type == 4 || !big ? file.u32(value)
                            : file.u64(value);
        if (big && type != 5) file.u32(0);
    };
    constexpr unsigned count = 9;
    const quint64 valuesAt = big ? 16 + 8 + count * 20 + 8 : 8 + 2 + count * 12 + 4;
    file.text(big ? "MM" : "II").u16(big ? 43 : 42);
    big ? file.u16(8).u16(0).u64(16).u64(count) : file.u32(8).u16(count);
    entry(256, 4, 40);
    entry(257, 4, 30);
    entry(258, 3, 16);
    entry(259, 3, 1);
    entry(262, 3, 1);
    entry(273, 4, stripAt);
    entry(279, 4, 2400);
    entry(282, 5, big ? (quint64(300) << 32 | 1) : valuesAt);
    entry(0x8769, 4, valuesAt + 8);
    big ? file.u64(0).u64(0).u64(1) : file.u32(0).u32(300).u32(1).u16(1);
    // The EXIF directory with one tag: a focal length of 35 mm in 35 mm film.
    entry(0xA405, 3, 35);
    return (big ? file.u64(0) : file.u32(0)).bytes();
}

} // namespace pictures
