#pragma once

#include <QStringList>

#include <memory>

namespace codec {
class DecoderPool;
}

/// What begins before the catalogue is open, so that a photograph that was named on the command
/// line is there when the window is. Main thread, with an application object.
struct EarlyStart {
    std::shared_ptr<codec::DecoderPool> decoders;

    /// Makes the decoders, and begins to decode the first file of the paths, for the screen that
    /// the window will probably be on. Files are read through the decoders from now on.
    [[nodiscard]] static EarlyStart begin(const QStringList& paths);
};
