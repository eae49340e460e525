#pragma once

#include "codec/process/FrameReader.h"
#include "codec/process/MemoryBudget.h"
#include "platform/values/PBValue.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace codec {

namespace process {
class HelperShelf;
} // namespace process

/// Decoder processes that read strangers' files in place of this one. A picture that crashes its
/// process, or takes too long or too much memory, costs that picture: the answer is nothing, and a
/// fresh process takes the next. Every operation blocks until it is answered, and may be called
/// from any thread; as many run at once as there are processes, and those that wait are served by
/// their urgency (see `process::HelperShelf`).
class DecoderPool final : public FrameReader {
public:
    struct Settings {
        /// The program whose main() calls `process::runIfDecoderProcess`.
        QByteArray executable = "/proc/self/exe";
        /// 0: one for each core that this process may use.
        int processes = 0;
        /// So many more, which thumbnails never take: one for what the user waits for, and one in
        /// its place when a stop has ended it, as libraries that can't be stopped make necessary.
        int reserved = 2;
        /// For reduced pictures that nobody looks at yet, and for properties.
        std::chrono::milliseconds thumbnailTime{10'000};
        /// For pictures in full, and for reduced ones that the user looks at, now or next.
        std::chrono::milliseconds fullTime{60'000};
        /// For an encoding: whoever waits for it sees it go on, and can stop it.
        std::chrono::milliseconds encodeTime = std::chrono::hours(1);
        /// Enough for the largest picture within the limits and a decoder's own copies of it; the
        /// program's libraries take part of it without using memory.
        std::uint64_t addressSpaceBytes = std::uint64_t{6} << 30;
        /// Bytes that decodes find available, of which they take half together.
        std::function<std::uint64_t()> availableMemory = &process::availableMemory;
    };

    /// Starts nothing yet: each process is started when it is first needed, or by `start`.
    explicit DecoderPool(Settings settings);
    /// Ends the processes. No operation may be running.
    ~DecoderPool() override;

    /// Has all processes started that are not running, and does not wait for that.
    void start();
    /// Has one started, and waits until it begins to come up: some milliseconds.
    void startOne();

    /// The request's own stop flag, allocator and number of threads are not used; a stop takes
    /// effect within 20 ms.
    [[nodiscard]] ReadResult decode(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) override;
    [[nodiscard]] OpenedSequence openSequence(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) override;
    [[nodiscard]] std::size_t
    countFrames(int descriptor, const QString& typeHint, Urgency urgency) override;
    /// Milliseconds; 0 for a still picture.
    [[nodiscard]] int frameDelay(int descriptor, const QString& typeHint, std::size_t frame);
    /// A picture that ends its process by itself, or keeps it computing for all its time, is
    /// unreadable; one whose process did not come up, was ended by others or waited for a disk is
    /// to be read another time.
    [[nodiscard]] PictureProperties properties(
        int descriptor, const QString& typeHint, std::size_t frame, std::stop_token stop) override;
    /// One process reads as many as go into one request. When it is lost, each is asked for alone,
    /// so that a picture that crashes its process still costs only itself.
    [[nodiscard]] std::vector<PictureProperties>
    propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop) override;
    [[nodiscard]] ReadMetadata
    metadataBlocks(int descriptor, const NewPicture& picture, std::stop_token stop) override;
    [[nodiscard]] bool embedMetadata(
        QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile,
        std::stop_token stop) override;
    /// A stop takes effect within 20 ms: where the library does not hear of it, its process goes.
    [[nodiscard]] QByteArray encode(
        const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
        const EncodeSettings& settings) override;

private:
    struct PropertyAnswer {
        bool isKnown = false; ///< false: the process was lost, or had no room for the answer
        PictureProperties properties;
    };
    /// One request for at most `process::mostPictures` of one type; as many answers.
    [[nodiscard]] std::vector<PropertyAnswer> askForProperties(
        std::span<const int> descriptors, const QString& typeHint, std::size_t frame,
        const std::stop_token& stop);
    [[nodiscard]] std::chrono::milliseconds timeFor(const DecodeRequest& request) const;

    const Settings _settings;
    /// Sequences hold it, too.
    const std::shared_ptr<process::HelperShelf> _shelf;
};

} // namespace codec
