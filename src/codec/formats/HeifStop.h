#pragma once

#include "codec/pixels/StopFlag.h"

namespace codec::formats {

/// While it lives, HEIF pictures that consist of tiles, as those of telephones do, end with the
/// tile that is being decoded once the flag is set. For processes that decode one picture at a
/// time: it means all that are decoded. The flag outlives it.
class HeifStop {
public:
    explicit HeifStop(const StopFlag& flag);
    ~HeifStop();
    HeifStop(const HeifStop&) = delete;
    HeifStop& operator=(const HeifStop&) = delete;
};

} // namespace codec::formats
