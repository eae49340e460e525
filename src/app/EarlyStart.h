#pragma once

#include <QStringList>

#include <memory>

namespace codec {
class DecoderPool;
}

/// What begins before the catalogue is open, so that a photograph that was named on the command
/// line is there when the window is. Main thread.
class EarlyStart {
public:
    /// Makes the decoders; has one come up if a file is among the paths. Files are read through
    /// them from now on. Needs no application object: coming up takes as long as making that.
    void makeDecoders(const QStringList& paths);
    /// Begins to decode the first file of the paths, for the screen that the window will probably
    /// be on. Needs an application object.
    void beginToDecode();

    /// nullptr until they are made.
    [[nodiscard]] const std::shared_ptr<codec::DecoderPool>& decoders() const { return _decoders; }
    void forgetDecoders() { _decoders.reset(); }
    /// Somebody waits for a photograph.
    [[nodiscard]] bool isOfPhotograph() const { return !_file.isEmpty(); }

private:
    std::shared_ptr<codec::DecoderPool> _decoders;
    QString _file;
};
