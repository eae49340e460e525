#include "codec/PBImageImporter.h"

#include "codec/Bitmaps.h"
#include "codec/formats/Codecs.h"
#include "codec/process/Descriptor.h"
#include "codec/process/FrameReader.h"
#include "core/FileTypes.h"
#include "platform/files/TypeIdentifiers.h"

#include <QFile>

#include <array>
#include <climits>
#include <exception>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Types = platform::TypeIdentifiers;

namespace {

/// A file for the time of one question.
struct OpenFile {
    codec::process::Descriptor descriptor; // not open for what is no regular file
    QString typeHint;
    /// Why it is not open.
    codec::PropertiesStatus status = codec::PropertiesStatus::NotNow;

    explicit OpenFile(const QString& path)
        : typeHint(Types::forExtension(PBUtilities::pathExtension(path))) {
        // A named pipe must not hold the caller up.
        codec::process::Descriptor opened(::open(
            QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        struct stat found {};
        if (!opened.isOpen() || ::fstat(opened.get(), &found) != 0) return;
        status = codec::PropertiesStatus::Unreadable;
        if (S_ISREG(found.st_mode)) descriptor = std::move(opened);
    }

    /// The same for a picture.
    [[nodiscard]] codec::ReadStatus readStatus() const {
        return status == codec::PropertiesStatus::NotNow ? codec::ReadStatus::NotNow
                                                         : codec::ReadStatus::Refused;
    }
};

} // namespace

QStringList PBImageImporter::typeIdentifiers() {
    QStringList identifiers = Types::all();
    identifiers.removeIf([](const QString& identifier) {
        return !Types::conformsTo(identifier, Types::image) ||
               Types::equal(identifier, Types::multiPicture);
    });
    return identifiers;
}

std::unique_ptr<PBImageImporter> PBImageImporter::initWithImagePath(const QString& path) {
    return std::unique_ptr<PBImageImporter>(new PBImageImporter(path));
}

QString PBImageImporter::utiType() {
    const OpenFile file(_path);
    std::array<std::uint8_t, codec::sniffLength> head{};
    const ssize_t length = ::pread(file.descriptor.get(), head.data(), head.size(), 0);
    if (length <= 0) return {};
    return codec::sniffType(std::span(head).first(static_cast<std::size_t>(length)), file.typeHint);
}

std::size_t PBImageImporter::imageCount() {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return 0;
    return codec::frameReader()->countFrames(
        file.descriptor.get(), file.typeHint, urgency().value_or(codec::Urgency::Properties));
}

codec::PictureProperties
PBImageImporter::propertiesAtIndex(std::size_t index, std::stop_token stop) {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return {file.status, {}};
    try {
        return codec::frameReader()->properties(file.descriptor.get(), file.typeHint, index, stop);
    } catch (const std::exception&) {
        return {};
    }
}

codec::ReadMetadata
PBImageImporter::readMetadata(const codec::NewPicture& picture, std::stop_token stop) {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return {file.status, {}};
    try {
        return codec::frameReader()->metadataBlocks(file.descriptor.get(), picture, stop);
    } catch (const std::exception&) {
        return {};
    }
}

std::vector<codec::PictureProperties>
PBImageImporter::propertiesOfImages(std::span<const QString> paths, std::stop_token stop) {
    std::vector<codec::PictureProperties> all(paths.size());
    std::vector<OpenFile> files;
    std::vector<codec::OpenPicture> pictures;
    std::vector<std::size_t> places;
    for (std::size_t index = 0; index < paths.size(); ++index) {
        OpenFile file(paths[index]);
        all[index].status = file.status;
        if (!file.descriptor.isOpen()) continue;
        pictures.push_back({file.descriptor.get(), file.typeHint});
        places.push_back(index);
        files.push_back(std::move(file));
    }
    try {
        auto read = codec::frameReader()->propertiesOfPictures(pictures, stop);
        for (std::size_t index = 0; index < read.size(); ++index)
            all[places[index]] = std::move(read[index]);
    } catch (const std::exception&) {
        for (const std::size_t place : places)
            all[place] = {};
    }
    return all;
}

codec::ReadResult
PBImageImporter::readImage(const codec::DecodeRequest& request, std::stop_token stop) {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return {file.readStatus(), {}};
    codec::ReadResult result;
    try {
        const auto reader = codec::frameReader();
        result = reader->decode(file.descriptor.get(), file.typeHint, request, stop);
        if (request.maxSize == 0 || result.status != codec::ReadStatus::Refused) return result;
        // A decoder that can't make the small picture may still make the large one.
        codec::DecodeRequest whole = request;
        whole.maxSize = 0;
        result = reader->decode(file.descriptor.get(), file.typeHint, whole, stop);
        QImage& full = result.frame.image;
        if (std::max(full.width(), full.height()) > request.maxSize &&
            request.depth == codec::Depth::Screen) {
            full = PBUtilities::scaleCGImageRef(full, request.maxSize);
        }
    } catch (const std::exception&) {
        // Memory: of this process.
        if (result.frame.image.isNull()) result.status = codec::ReadStatus::NotNow;
    }
    return result;
}

codec::OpenedSequence
PBImageImporter::openSequence(const codec::DecodeRequest& request, std::stop_token stop) {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return {file.readStatus(), nullptr};
    try {
        return codec::frameReader()->openSequence(
            file.descriptor.get(), file.typeHint, request, stop);
    } catch (const std::exception&) {
        return {};
    }
}

QImage PBImageImporter::createEmbeddedImage(unsigned maxSize, std::stop_token stop) {
    const OpenFile file(_path);
    if (!file.descriptor.isOpen()) return {};
    try {
        codec::DecodeRequest request;
        request.maxSize = static_cast<int>(std::min(maxSize, static_cast<unsigned>(INT_MAX)));
        request.onlyEmbedded = true;
        request.urgency = urgency().value_or(codec::Urgency::ThumbnailOnShow);
        return codec::frameReader()
            ->decode(file.descriptor.get(), file.typeHint, request, stop)
            .frame.image;
    } catch (const std::exception&) {
        return {};
    }
}
