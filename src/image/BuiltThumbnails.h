#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class PBBuildThumbOperation;
struct BuildThumbServices;

/// Thumbnails that are made and not stored yet. Some are stored in one transaction, since each of
/// its own takes as many syncs as all together; they wait for a moment only. Belongs to the build
/// queue's thread.
class BuiltThumbnails {
public:
    struct Thumbnail {
        std::shared_ptr<const PBBuildThumbOperation> operation;
        QByteArray data;
    };

    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit BuiltThumbnails(Clock clock = std::chrono::steady_clock::now)
        : _clock(std::move(clock)) {}

    void add(Thumbnail thumbnail);
    [[nodiscard]] bool isEmpty() const { return _waiting.empty(); }
    /// How long they, if there are any, may still wait. Not above 0: they are to be stored now.
    [[nodiscard]] std::chrono::nanoseconds patience() const;
    /// Stores them, counts them, and tells of those that were not cancelled.
    void store(BuildThumbServices& services);

private:
    const Clock _clock;
    std::vector<Thumbnail> _waiting;
    std::chrono::steady_clock::time_point _since; ///< when the first of them came
};
