// The properties of a JPEG file as the importer answers them, in this process, against the bare
// read of its metadata by the library.

#include "codec/metadata/ImageProperties.h"
#include "image/Photographs.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <exiv2/exiv2.hpp>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString path = bench::writePhotograph(folder, bench::twelveMegapixels);
    const std::string name = path.toStdString();
    constexpr int files = 200;
    const bool met = bench::printRatio(
        "200 reads of a JPEG's properties / of its metadata", 10,
        [&] {
            for (int file = 0; file < files; ++file) {
                const Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(name);
                image->readMetadata();
                bench::keep(image->exifData().count());
            }
        },
        [&] {
            for (int file = 0; file < files; ++file) {
                QFile opened(path);
                if (!opened.open(QIODevice::ReadOnly)) return;
                const auto properties = codec::readImageProperties(opened.handle(), {}, 0);
                bench::keep(properties.has_value());
            }
        },
        2.2); // leaves a part of the budget of 3.0 for the way through a helper
    return met ? 0 : 1;
}
