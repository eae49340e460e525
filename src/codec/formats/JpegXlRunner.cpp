#include "codec/formats/JpegXlRunner.h"

#include <jxl/thread_parallel_runner.h>

namespace codec::formats {

namespace {

/// One run through the pieces of work, as the threads see it.
struct Pieces {
    void* opaque;
    JxlParallelRunInit init;
    JxlParallelRunFunction work;
    const StopFlag& stop;

    static JxlParallelRetCode begin(void* pieces, std::size_t threads) {
        const auto* self = static_cast<const Pieces*>(pieces);
        return self->init(self->opaque, threads);
    }
    static void doOne(void* pieces, std::uint32_t value, std::size_t thread) {
        const auto* self = static_cast<const Pieces*>(pieces);
        if (!self->stop.isSet()) self->work(self->opaque, value, thread);
    }
};

} // namespace

JpegXlRunner::JpegXlRunner(int threads)
    : _threads(
          threads > 1 ? JxlThreadParallelRunnerCreate(nullptr, static_cast<std::size_t>(threads))
                      : nullptr) {}

JpegXlRunner::~JpegXlRunner() {
    if (_threads) JxlThreadParallelRunnerDestroy(_threads);
}

void JpegXlRunner::attach(JxlDecoder* decoder) {
    JxlDecoderSetParallelRunner(decoder, run, this);
}

JxlParallelRetCode JpegXlRunner::run(
    void* runner, void* opaque, JxlParallelRunInit init, JxlParallelRunFunction work,
    std::uint32_t begin, std::uint32_t end) {
    const auto* self = static_cast<const JpegXlRunner*>(runner);
    Pieces pieces{opaque, init, work, self->_stop};
    if (self->_threads && end - begin > 1) {
        const JxlParallelRetCode result = JxlThreadParallelRunner(
            self->_threads, &pieces, Pieces::begin, Pieces::doOne, begin, end);
        if (result != 0) return result;
    } else {
        const JxlParallelRetCode result = init(opaque, 1);
        if (result != 0) return result;
        for (std::uint32_t value = begin; value < end; ++value)
            Pieces::doOne(&pieces, value, 0);
    }
    // What was left out makes the picture wrong.
    return self->_stop.isSet() ? JXL_PARALLEL_RET_RUNNER_ERROR : 0;
}

} // namespace codec::formats
