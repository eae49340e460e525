#pragma once

#include <QByteArray>

class ApplicationController;

/// What the program shows at this moment, as one JSON object: the answer to `--state`, for tests
/// and for reports of faults. Rectangles are [x, y, width, height] in points of the screen. Only
/// what is on show is listed one by one, so that the size of a collection doesn't matter. Main
/// thread.
[[nodiscard]] QByteArray programState(ApplicationController& controller);
