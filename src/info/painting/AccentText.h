#pragma once

#include "ui/PBThemes.h"

/// For text and lines on the accent colour, which is bright in the dark scheme; at least 4.5 to 1.
/// Main thread.
[[nodiscard]] inline QColor accentTextColor() {
    return PBThemes::scheme() == PBThemes::Scheme::Dark ? PBThemes::colors().browser
                                                        : QColor(Qt::white);
}
