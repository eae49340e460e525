#include "app/ThemeControl.h"

#include "shell/services/Preferences.h"

using Theme = Preferences::Theme;
using Scheme = PBThemes::Scheme;

ThemeControl::ThemeControl(const Preferences& preferences, std::optional<bool> isDark)
    : _preferences(preferences), _isDark(isDark) {
    apply();
    connect(&_desktop, &ColorScheme::preferredChanged, this, &ThemeControl::apply);
    connect(&preferences, &Preferences::themeDidChange, this, [this] {
        _isDark.reset();
        apply();
    });
}

void ThemeControl::apply() const {
    const Theme theme = _preferences.theme();
    const bool isDesktops = !_isDark && theme == Theme::Desktop;
    const bool isDark = _isDark.value_or(theme == Theme::Dark);
    const Scheme scheme = isDesktops ? _desktop.preferred() : isDark ? Scheme::Dark : Scheme::Light;
    PBThemes::apply(scheme);
}
