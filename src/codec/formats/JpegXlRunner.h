#pragma once

#include "codec/pixels/Decoder.h"

#include <jxl/decode.h>

namespace codec::formats {

/// The cores on which a JPEG XL picture is decoded. Between two pieces of work, each of a few
/// milliseconds, it looks whether the decode is to stop, and then makes it fail.
class JpegXlRunner {
public:
    /// With one thread all work is done where the decoder is called.
    explicit JpegXlRunner(int threads);
    ~JpegXlRunner();
    JpegXlRunner(const JpegXlRunner&) = delete;
    JpegXlRunner& operator=(const JpegXlRunner&) = delete;

    /// From now on the decoder works on these cores; it must not outlive them.
    void attach(JxlDecoder* decoder);
    /// Of the request that runs now.
    void setStop(const StopFlag& stop) { _stop = stop; }

private:
    static JxlParallelRetCode
    run(void* runner, void* opaque, JxlParallelRunInit init, JxlParallelRunFunction work,
        std::uint32_t begin, std::uint32_t end);

    void* _threads = nullptr; ///< nullptr with one thread
    StopFlag _stop;
};

} // namespace codec::formats
