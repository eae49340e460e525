#include "image/codec/PBImageImporter.h"

#include "core/FileTypes.h"
#include "image/codec/AreaScaler.h"
#include "image/codec/Bitmaps.h"
#include "image/codec/FrameReader.h"
#include "platform/TypeIdentifiers.h"

#include <QFile>

#include <array>
#include <climits>
#include <cmath>
#include <exception>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Types = platform::TypeIdentifiers;

QStringList PBImageImporter::typeIdentifiers() {
    QStringList identifiers = Types::all();
    identifiers.removeIf([](const QString& identifier) {
        return !Types::conformsTo(identifier, Types::image) ||
               Types::equal(identifier, Types::multiPicture);
    });
    return identifiers;
}

std::unique_ptr<PBImageImporter> PBImageImporter::initWithImagePath(const QString& path) {
    // A named pipe must not hold the caller up.
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    return std::unique_ptr<PBImageImporter>(
        new PBImageImporter(descriptor, Types::forExtension(PBUtilities::pathExtension(path))));
}

PBImageImporter::PBImageImporter(int descriptor, QString typeHint)
    : _imageSourceRef(descriptor), _typeHint(std::move(typeHint)) {}

PBImageImporter::~PBImageImporter() {
    ::close(_imageSourceRef);
}

QString PBImageImporter::utiType() {
    std::array<std::uint8_t, codec::sniffLength> head{};
    const ssize_t length = ::pread(_imageSourceRef, head.data(), head.size(), 0);
    if (length <= 0) return {};
    return codec::sniffType(std::span(head).first(static_cast<std::size_t>(length)), _typeHint);
}

std::size_t PBImageImporter::imageCount() {
    return codec::frameReader()->countFrames(_imageSourceRef, _typeHint);
}

std::optional<PBDictionary> PBImageImporter::propertiesAtIndex(std::size_t index) {
    try {
        return codec::frameReader()->properties(_imageSourceRef, _typeHint, index);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::vector<std::optional<PBDictionary>>
PBImageImporter::propertiesOfImporters(std::span<PBImageImporterProtocol* const> importers) {
    std::vector<std::optional<PBDictionary>> all(importers.size());
    std::vector<codec::OpenPicture> pictures;
    std::vector<std::size_t> places;
    for (std::size_t index = 0; index < importers.size(); ++index) {
        if (const auto* own = dynamic_cast<PBImageImporter*>(importers[index])) {
            pictures.push_back({own->_imageSourceRef, own->_typeHint});
            places.push_back(index);
        } else if (importers[index]) {
            all[index] = importers[index]->propertiesAtIndex(0);
        }
    }
    try {
        auto read = codec::frameReader()->propertiesOfPictures(pictures);
        for (std::size_t index = 0; index < read.size(); ++index)
            all[places[index]] = std::move(read[index]);
    } catch (const std::exception&) {
        return all;
    }
    return all;
}

QImage
PBImageImporter::createImageWithMaxSize(unsigned maxSize, std::size_t index, std::stop_token stop) {
    QImage full;
    try {
        const auto reader = codec::frameReader();
        codec::DecodeRequest request;
        request.frame = index;
        request.maxSize = static_cast<int>(std::min(maxSize, static_cast<unsigned>(INT_MAX)));
        codec::ReadResult result = reader->decode(_imageSourceRef, _typeHint, request, stop);
        if (maxSize == 0 || result.status != codec::ReadStatus::Refused) return result.frame.image;
        // A decoder that can't make the small picture may still make the large one.
        request.maxSize = 0;
        full = reader->decode(_imageSourceRef, _typeHint, request, stop).frame.image;
        if (full.isNull()) return {};
        const auto side = static_cast<unsigned>(std::max(full.width(), full.height()));
        return side <= maxSize ? full : scaleCGImageRef(full, maxSize);
    } catch (const std::exception&) {
        return full;
    }
}

double PBImageImporter::fitInRect(QRectF& rect, double width, double height, bool fitIn) {
    return PBUtilities::fitInRect(rect, width, height, fitIn);
}

QImage PBImageImporter::scaleCGImageRef(const QImage& image, double size) {
    if (image.isNull()) return {};
    QRectF rect(0, 0, size, size);
    fitInRect(rect, image.width(), image.height(), false);
    const QSize scaled(
        std::max(1, static_cast<int>(std::rint(rect.width()))),
        std::max(1, static_cast<int>(std::rint(rect.height()))));
    return codec::reduceImage(PBUtilities::standardBitmap(image), scaled);
}
