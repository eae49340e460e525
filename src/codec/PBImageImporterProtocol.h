#pragma once

#include "codec/metadata/PictureProperties.h"
#include "codec/process/FrameReader.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

/// Reads one image file. Opens it when it is asked something and lets go of it with the answer:
/// what waits in a queue holds no open file. Used by one thread at a time; may be made on any. A
/// missing result is the only sign of failure, and nothing throws.
class PBImageImporterProtocol {
public:
    PBImageImporterProtocol() = default;
    PBImageImporterProtocol(const PBImageImporterProtocol&) = delete;
    PBImageImporterProtocol& operator=(const PBImageImporterProtocol&) = delete;
    virtual ~PBImageImporterProtocol() = default;

    /// Who waits for the answers to the questions that take no request of their own; until then
    /// nobody does who looks at the picture.
    void setUrgency(codec::Urgency urgency) { _urgency = urgency; }

    /// The property dictionary of a frame (see `codec::readImageProperties`), read without decoding
    /// it, or what a missing answer means. Stopped, it is `NotNow`.
    [[nodiscard]] virtual codec::PictureProperties
    propertiesAtIndex(std::size_t index, std::stop_token stop) = 0;
    /// What of the file's metadata goes along into a file of the new picture; stopped, it is
    /// `NotNow`.
    [[nodiscard]] virtual codec::ReadMetadata
    readMetadata(const codec::NewPicture& /*picture*/, std::stop_token /*stop*/) {
        return {codec::PropertiesStatus::Unreadable, {}};
    }
    /// A frame as the request says (its stop flag, limits and allocator are not used), its stored
    /// orientation not applied.
    [[nodiscard]] virtual codec::ReadResult
    readImage(const codec::DecodeRequest& request, std::stop_token stop) = 0;
    /// The image alone, with its longest side at most `maxSize` pixels (0 for the full size); null
    /// when it can't be read or was stopped.
    [[nodiscard]] QImage
    createImageWithMaxSize(unsigned maxSize, std::size_t index, std::stop_token stop = {});
    /// The frames of the file one after the other, each as the request says; only the first of a
    /// file that does not play. May outlive the importer.
    [[nodiscard]] virtual codec::OpenedSequence
    openSequence(const codec::DecodeRequest& request, std::stop_token stop);
    /// The small picture that the camera put into the file, at most `maxSize` pixels a side, as
    /// stored; it may have black bars. A null image where there is none, at once.
    [[nodiscard]] virtual QImage
    createEmbeddedImage(unsigned /*maxSize*/, std::stop_token /*stop*/ = {}) {
        return {};
    }
    /// 0 when the file can't be read; at most `codec::mostFrames`.
    [[nodiscard]] virtual std::size_t imageCount() = 0;
    /// The type identifier that the content says; empty when unknown.
    [[nodiscard]] virtual QString utiType() = 0;

protected:
    [[nodiscard]] std::optional<codec::Urgency> urgency() const { return _urgency; }

private:
    std::optional<codec::Urgency> _urgency;
};

/// What the manager knows of an importer class. Called on any thread.
struct PBImageImporterClass {
    /// The type identifiers that it handles; nothing when it can't say yet.
    std::function<std::optional<QStringList>()> typeIdentifiers;
    /// An importer for the file, made without touching the disk.
    std::function<std::unique_ptr<PBImageImporterProtocol>(const QString& path)> initWithImagePath;
    /// `propertiesAtIndex` 0 of the files, in their order, where that costs less than asking for
    /// one after the other; may be empty.
    std::function<std::vector<codec::PictureProperties>(
        std::span<const QString> paths, std::stop_token stop)>
        propertiesOfImages;
};
