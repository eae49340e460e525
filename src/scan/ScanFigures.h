#pragma once

#include <QtGlobal>

#include <atomic>
#include <chrono>

/// Counts and times of the scans of this run, for `--stats`. Any thread.
struct ScanFigures {
    using Clock = std::chrono::steady_clock;

    std::atomic<quint64> items{0};        ///< put into the work tree by the present scan
    std::atomic<quint64> folders{0};      ///< visited in the catalogue or on disk by it
    std::atomic<quint64> rowsInserted{0}; ///< images, in the whole run
    std::atomic<quint64> rowsRemoved{0};
    std::atomic<quint64> publications{0};
    /// Milliseconds from the start of the present scan; below 0 while it has not come to that.
    std::atomic<double> firstPublication{-1};
    std::atomic<double> cataloguePass{-1};
    std::atomic<double> scanFinished{-1};
    std::atomic<double> thumbnailsDone{-1}; ///< when the build queue was last idle
    std::atomic<double> firstShown{-1};     ///< when the first publication was on the screen
    std::atomic<double> lastShown{-1};
    /// To the user, that the catalogue can't be written to.
    std::atomic<bool> toldFailure{false};
    /// That a file could not be read.
    std::atomic<bool> toldUnreadFile{false};
    /// And that the catalogue can't be.
    std::atomic<bool> toldUnreadCatalogue{false};

    /// Main thread, before the scan's operation is queued.
    void scanBegins() {
        items = folders = 0;
        firstPublication = cataloguePass = scanFinished = thumbnailsDone = -1;
        firstShown = lastShown = -1;
        _begin = Clock::now().time_since_epoch().count();
    }
    /// Keeps the first time.
    void mark(std::atomic<double>& time) const {
        double none = -1;
        time.compare_exchange_strong(none, sinceBegin());
    }
    /// Milliseconds.
    [[nodiscard]] double sinceBegin() const {
        const auto since = Clock::now().time_since_epoch() - Clock::duration(_begin.load());
        return std::chrono::duration<double, std::milli>(since).count();
    }

private:
    std::atomic<Clock::rep> _begin{Clock::now().time_since_epoch().count()};
};
