#pragma once

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
    /// Stopped, out of time or memory, or the helper process died: not worth another try.
    Failed
};

struct ReadResult {
    ReadStatus status = ReadStatus::Refused;
    Frame frame;
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
    /// 0 when the picture can't be opened.
    [[nodiscard]] virtual std::size_t countFrames(int descriptor, const QString& typeHint) = 0;
    /// Stopped, the answer is `NotNow`.
    [[nodiscard]] virtual PictureProperties properties(
        int descriptor, const QString& typeHint, std::size_t frame, std::stop_token stop) = 0;
    /// Those of the first frame of each picture, in the order given: for many small files this may
    /// cost far less than asking for one after the other.
    [[nodiscard]] virtual std::vector<PictureProperties>
    propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop);
};

/// One that reads nothing: every picture is to be read another time.
[[nodiscard]] std::shared_ptr<FrameReader> noReader();

/// The reader that all importers use: what was installed, else one that decodes in this process,
/// which is for tools and tests.
[[nodiscard]] std::shared_ptr<FrameReader> frameReader();
/// nullptr goes back to decoding in this process. Any thread; requests that run end as they began.
void setFrameReader(std::shared_ptr<FrameReader> reader);

} // namespace codec
