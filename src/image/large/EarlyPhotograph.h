#pragma once

#include "codec/PBImageImporterManager.h"
#include "codec/process/FrameReader.h"
#include "image/large/LargeImageScreen.h"
#include "platform/files/FileManager.h"
#include "platform/tasks/Mutex.h"

#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

/// The one photograph that was opened from outside: it is read and decoded on a thread of its own,
/// while window, catalogue and scan are made ready for it. The line of loads takes the picture from
/// here in place of decoding it once more. One at a time; any thread, where nothing else is said.
/// Files are read through `codec::frameReader`: whoever takes that away finishes first.
class EarlyPhotograph {
public:
    /// What the file itself says.
    struct Seen {
        platform::ResourceValues values;
        QSizeF imageSize; ///< pixels, as stored; never empty
        /// By its own orientation; degrees, counter-clockwise.
        double rotateAngle = 0;
    };
    using Observer = std::function<void(const Seen& seen)>;

    /// That of the program.
    [[nodiscard]] static EarlyPhotograph& shared();

    EarlyPhotograph();
    /// Waits for what still runs, which ends at once.
    ~EarlyPhotograph();
    EarlyPhotograph(const EarlyPhotograph&) = delete;
    EarlyPhotograph& operator=(const EarlyPhotograph&) = delete;

    /// Begins with the file, at the size at which it fits the screen and in its colours, unless
    /// that was begun; a former one is forgotten. Files that play are read, and not decoded.
    void begin(const QString& path, const LargeImageScreen& screen);
    /// Calls the observer on the main thread, and never from within, once what the file says is
    /// known. Not at all where it can't be read, or something else was begun meanwhile.
    void observe(const QString& path, Observer observer);

    /// What came of decoding the file, for whoever asks first; waits until it is there, or until
    /// the stop. Nothing where it was not begun at this size and for these colours, or the file is
    /// another than the one with this length (bytes) and date (seconds since 1970).
    [[nodiscard]] std::optional<codec::ReadResult> take(
        const QString& path, quint64 fileSize, double modificationDate,
        const codec::DecodeRequest& request, std::stop_token stop);
    /// Nobody will ask for it. What runs is stopped, and not waited for: it may stand in the kernel
    /// for as long as a disk does not answer.
    void forget();
    /// The same, and waits for all that runs.
    void finish();

private:
    struct Work;

    [[nodiscard]] std::shared_ptr<Work> workOn(const QString& path) const;
    void decode(const std::shared_ptr<Work>& work, const std::stop_token& stop);
    void read(const std::shared_ptr<Work>& work, const std::stop_token& stop);

    PBImageImporterManager _importers;
    mutable platform::Mutex _mutex;
    std::shared_ptr<Work> _work VELMORA_GUARDED_BY(_mutex);
    /// Forgotten, and perhaps not at their end yet.
    std::vector<std::shared_ptr<Work>> _ending VELMORA_GUARDED_BY(_mutex);
};
