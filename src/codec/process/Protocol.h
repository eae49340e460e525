#pragma once

#include <array>
#include <cstdint>

/// What the program and its decoder processes say to each other: one message a packet, of fixed
/// size, in the byte order of the machine. Results lie in shared memory, not in the packets.
namespace codec::process {

/// The program's executable takes this word as first argument for a decoder process, and the bytes
/// of address space that it may take as second.
inline constexpr const char* decoderArgument = "--decoder";

/// Descriptors of a decoder process at its start.
inline constexpr int socketDescriptor = 3;
inline constexpr int controlDescriptor = 4; ///< one page that tells which request to stop
inline constexpr int resultDescriptor = 5;  ///< for results of at most `smallResultBytes`

/// Room for a thumbnail of 1024 pixels a side, or for the properties of a picture.
inline constexpr std::uint64_t smallResultBytes = std::uint64_t{4} << 20;
/// Longest side for which the small room is large enough.
inline constexpr int smallResultSide = 1024;

/// Pictures whose properties are asked for together, at most.
inline constexpr std::size_t mostPictures = 16;

enum class Kind : std::uint32_t {
    Decode,
    CountFrames,
    FrameDelay,
    Properties,
    MetadataBlocks, ///< for the new picture that the request tells of
    EmbedMetadata,  ///< see `embedExchange`
    Encode,         ///< see `encodeExchange`
    OpenSequence,   ///< keeps the picture open; answered with the frames to play
    NextFrame,      ///< of the sequence that was opened last
    CloseSequence,  ///< there is nobody to read the answer
    Grant,          ///< the answer to `NeedsMemory`
    Deny,           ///< the same: the decode is over
};

/// To the decoder process. The picture's descriptor comes with it (but for the frames of an open
/// sequence), then one for a large result and one for the bytes of the target profile, where the
/// two flags say so. For properties there may be several pictures of one type, and there is no
/// other descriptor; for metadata to be embedded, and for pixels to be encoded, the memory of these
/// takes the picture's place.
struct Request {
    Kind kind = Kind::Decode;
    std::uint32_t number = 0;
    std::uint64_t frame = 0;
    std::uint64_t pixelLimit = 0;
    std::uint64_t byteLimit = 0;
    std::int32_t maxSize = 0;
    std::uint32_t profileBytes = 0;
    std::uint32_t hasLargeResult = 0;
    std::uint32_t hasProfile = 0;
    std::uint32_t onlyEmbedded = 0;
    std::uint32_t pictures = 1;
    std::uint32_t threads = 1;
    std::uint32_t isAsInSource = 0; ///< as `Depth::Source`
    std::uint32_t isFiltered = 0;   ///< as `Reduction::Filtered`
    std::int32_t newWidth = 0;      ///< with the next four, a `NewPicture`
    std::int32_t newHeight = 0;
    std::uint32_t isNewSrgb = 0;
    std::uint32_t hasNewIptc = 0;
    std::uint32_t hasNewLocation = 0;
    /// Type identifier by the file's name, in ASCII, ended by a zero.
    std::array<char, 72> typeHint{};
};

enum class Status : std::uint32_t {
    Failed,
    Done,
    /// Comes before the reply to a decode that takes much memory (`count` bytes), once: the process
    /// waits for `Grant` or `Deny`.
    NeedsMemory,
};

/// A decode that takes less does not ask.
inline constexpr std::uint64_t memoryWithoutAsking = std::uint64_t{32} << 20;

/// The profile of a result's colours.
enum class ResultProfile : std::uint32_t {
    Srgb,
    Wanted, ///< the one that came with the request
    Own,    ///< the picture's: its bytes are in the memory for small results
};

/// From the decoder process.
struct Reply {
    std::uint32_t number = 0; ///< of the request; 0 for the greeting
    Status status = Status::Failed;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t isOpaque = 0;
    std::uint32_t isDeep = 0; ///< 16 bits a channel
    std::uint32_t isComplete = 0;
    ResultProfile profile = ResultProfile::Srgb;
    std::uint32_t profileBytes = 0;
    /// Frames or milliseconds (of a sequence's frame, as they are shown); for properties, the bytes
    /// of the result, which begins with one number for each picture: the bytes of its dictionary,
    /// which stand behind all the numbers, or `noProperties` or `noRoom`; for metadata, those of
    /// the result, which begins with `MetadataLengths`, or of the file that was written; in the
    /// greeting, the confinements that the kernel refused.
    std::uint64_t count = 0;
};

/// Before the blocks of metadata, which stand one behind the other.
struct MetadataLengths {
    std::uint64_t exif = 0;
    std::uint64_t iptc = 0;
    std::uint64_t xmp = 0;
    std::uint64_t isComplete = 0; ///< as in `MetadataBlocks`
};

/// The picture has no properties.
inline constexpr std::uint64_t noProperties = UINT64_MAX;
/// Its properties did not fit behind those of the others; it may be asked for alone.
inline constexpr std::uint64_t noRoom = UINT64_MAX - 1;

/// Bits of the greeting.
enum Refused : std::uint64_t { RefusedPrivileges = 1, RefusedFilter = 2, RefusedMemoryLimit = 4 };

} // namespace codec::process
