#include "shell/services/Preferences.h"

#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"

#include <utility>

namespace {

const QString wheelKey = QStringLiteral("LargeViewWheel");
const QString groundKey = QStringLiteral("LargeViewGround");
const QString themeKey = QStringLiteral("Theme");
const QString languageKey = QStringLiteral("Language");

template <typename Choice>
Choice choiceIn(const platform::UserDefaults& defaults, const QString& key, Choice last) {
    const qint64 stored = defaults.integerForKey(key).value_or(0);
    return stored >= 0 && stored <= static_cast<qint64>(last) ? static_cast<Choice>(stored)
                                                              : Choice{};
}

/// False where nothing changes.
template <typename Choice>
bool store(platform::UserDefaults& defaults, const QString& key, Choice& choice, Choice wanted) {
    platform::assertMainThread();
    if (std::exchange(choice, wanted) == wanted) return false;
    defaults.setInteger(static_cast<qint64>(wanted), key);
    return true;
}

} // namespace

Preferences::Preferences(platform::UserDefaults& defaults)
    : _defaults(defaults), _wheel(choiceIn(defaults, wheelKey, Wheel::Zoom)),
      _ground(choiceIn(defaults, groundKey, Ground::Window)),
      _theme(choiceIn(defaults, themeKey, Theme::Dark)),
      _language(defaults.stringForKey(languageKey).value_or(QString())) {}

void Preferences::setWheel(Wheel wheel) {
    if (store(_defaults, wheelKey, _wheel, wheel)) Q_EMIT wheelDidChange();
}

void Preferences::setGround(Ground ground) {
    if (store(_defaults, groundKey, _ground, ground)) Q_EMIT groundDidChange();
}

void Preferences::setTheme(Theme theme) {
    if (store(_defaults, themeKey, _theme, theme)) Q_EMIT themeDidChange();
}

void Preferences::setLanguage(const QString& language) {
    platform::assertMainThread();
    if (std::exchange(_language, language) == language) return;
    _defaults.setString(language, languageKey);
}
