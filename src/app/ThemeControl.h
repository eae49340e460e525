#pragma once

#include "ui/ColorScheme.h"

#include <optional>

class Preferences;

/// Applies the colours that the user prefers, and those of the desktop where that is the wish. Main
/// thread.
class ThemeControl final : public QObject {
public:
    /// Applies them at once. `isDark` is the theme until the user prefers another one. The
    /// preferences outlive this object.
    ThemeControl(const Preferences& preferences, std::optional<bool> isDark);

private:
    void apply() const;

    const Preferences& _preferences;
    std::optional<bool> _isDark;
    ColorScheme _desktop;
};
