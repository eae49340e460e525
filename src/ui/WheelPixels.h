#pragma once

#include <QPoint>

class QWheelEvent;

/// The points that the event scrolls by; null where its device tells turns only. X servers tell
/// units of each driver's own for wheels and touchpads alike: null there, too. Main thread.
[[nodiscard]] QPoint pixelDeltaOf(const QWheelEvent& event);
