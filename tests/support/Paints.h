#pragma once

#include <QApplication>
#include <QPaintEvent>
#include <QRegion>

#include <utility>

namespace support {

/// What was painted of the widget whose events it filters.
struct Paints final : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
    /// Since the last time, with what waits.
    QRegion take() {
        for (int step = 0; step < 3; ++step) // what is asked for within one comes in the next
            QApplication::processEvents();
        return std::exchange(region, {});
    }
    QRegion region;
};

} // namespace support
