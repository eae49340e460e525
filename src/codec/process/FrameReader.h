#pragma once

#include "codec/encoding/PictureEncoder.h"
#include "codec/metadata/CarriedMetadata.h"
#include "codec/metadata/MetadataBlocks.h"
#include "codec/metadata/PictureProperties.h"
#include "codec/pixels/Decoder.h"
#include "platform/values/PBValue.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace codec {

/// What became of a request to decode.
enum class ReadStatus {
    Decoded,
    /// The decoder looked at the picture and could not do it: another size may still work.
    Refused,
    /// It brought its decoder down, or made it lie: not worth another try.
    Failed,
    /// Stopped, out of time or memory, or its decoder was ended by others: says nothing of the
    /// picture, which is to be tried another time.
    NotNow,
};

struct ReadResult {
    ReadStatus status = ReadStatus::Refused;
    Frame frame;
};

/// What the next frame of a sequence is.
enum class SequenceStatus {
    Decoded,
    Ended,   ///< there is none after the last one
    Damaged, ///< it can't be decoded, nor can any after it; those before it stay good
    NotNow,  ///< as with `ReadStatus`; the sequence is over
};

struct SequenceFrame {
    SequenceStatus status = SequenceStatus::Ended;
    Frame frame;
    /// Milliseconds for which it is shown, brought to what players take (see `shownDelay`); 0 for a
    /// picture that does not play.
    int delay = 0;
};

/// The frames of one file, at one size, each composed onto those before it: any number of them cost
/// one way through the file. Holds the file open, and a decoder of its own, for as long as it
/// lives. Used by one thread at a time, and let go on any.
class FrameSequence {
public:
    FrameSequence() = default;
    FrameSequence(const FrameSequence&) = delete;
    FrameSequence& operator=(const FrameSequence&) = delete;
    virtual ~FrameSequence() = default;

    /// At least 1, and 1 for a file that does not play, whatever else it holds. As the file
    /// declares them: damage may end it earlier.
    [[nodiscard]] virtual std::size_t frameCount() const = 0;
    [[nodiscard]] bool isAnimation() const { return frameCount() > 1; }
    /// The next frame, from the first; blocks.
    [[nodiscard]] virtual SequenceFrame next(std::stop_token stop) = 0;
    /// The next frame is the first again.
    virtual void rewind() = 0;
};

struct OpenedSequence {
    /// What to think of the file where there is no sequence.
    ReadStatus status = ReadStatus::NotNow;
    std::unique_ptr<FrameSequence> sequence; ///< not null exactly when `Decoded`
};

/// An open file, borrowed, and the type that its name says.
struct OpenPicture {
    int descriptor = -1;
    QString typeHint;
};

/// Reads pictures from open files, wherever that happens: in this process, or in helper processes.
/// Descriptors are borrowed for the call. Any thread; every call blocks.
class FrameReader {
public:
    FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;
    virtual ~FrameReader() = default;

    [[nodiscard]] virtual ReadResult decode(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) = 0;
    /// The frames as the request wants each; its own `frame` is not used. The reader must outlive
    /// the sequence.
    [[nodiscard]] virtual OpenedSequence openSequence(
        int descriptor, const QString& typeHint, const DecodeRequest& request,
        std::stop_token stop) = 0;
    /// 0 when the picture can't be opened.
    [[nodiscard]] virtual std::size_t
    countFrames(int descriptor, const QString& typeHint, Urgency urgency) = 0;
    /// Stopped, the answer is `NotNow`.
    [[nodiscard]] virtual PictureProperties properties(
        int descriptor, const QString& typeHint, std::size_t frame, std::stop_token stop) = 0;
    /// Those of the first frame of each picture, in the order given: for many small files this may
    /// cost far less than asking for one after the other.
    [[nodiscard]] virtual std::vector<PictureProperties>
    propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop);
    /// What goes along with the picture into a file of the new one (see `carriedMetadata`);
    /// stopped, it is `NotNow`.
    [[nodiscard]] virtual ReadMetadata
    metadataBlocks(int descriptor, const NewPicture& picture, std::stop_token stop) = 0;
    /// Puts such blocks into an encoded file, see `codec::embedMetadata`; false, also where it was
    /// stopped or can't be done now, leaves it as it was.
    [[nodiscard]] virtual bool embedMetadata(
        QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile,
        std::stop_token stop) = 0;
    /// What `EncodeApart` is for; the settings' stop ends it at once where it is done in a process
    /// of its own. Here it is done in this one.
    [[nodiscard]] virtual QByteArray encode(
        const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
        const EncodeSettings& settings);
};

/// The cores that a decode may use: all for the picture that the user waits for, which is decoded
/// alone; the others share them.
[[nodiscard]] int threadsFor(Urgency urgency);
/// What `FrameSequence::frameCount` tells.
[[nodiscard]] std::size_t framesToPlay(Decoder& decoder);
/// What a decoder gave for a frame of a sequence. Half a picture is one where it is the first, and
/// all there is; upon others it is damage.
[[nodiscard]] SequenceFrame sequenceFrame(Frame frame, std::size_t index, int delay);

/// One that reads nothing: every picture is to be read another time.
[[nodiscard]] std::shared_ptr<FrameReader> noReader();

/// The reader that all importers use: what was installed, else one that decodes in this process,
/// which is for tools and tests.
[[nodiscard]] std::shared_ptr<FrameReader> frameReader();
/// nullptr goes back to decoding in this process. Any thread; requests that run end as they began.
void setFrameReader(std::shared_ptr<FrameReader> reader);

} // namespace codec
