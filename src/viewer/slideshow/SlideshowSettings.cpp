#include "viewer/slideshow/SlideshowSettings.h"

#include "platform/program/UserDefaults.h"

#include <cmath>

namespace {

const auto intervalKey = QStringLiteral("SlideshowInterval");
const auto transitionKey = QStringLiteral("SlideshowTransition");
const auto loopKey = QStringLiteral("SlideshowLoop");
const auto shuffleKey = QStringLiteral("SlideshowShuffle");
constexpr double usualInterval = 2.0;

double intervalIn(const platform::UserDefaults& userDefaults) {
    const double interval = userDefaults.doubleForKey(intervalKey).value_or(usualInterval);
    if (!std::isfinite(interval)) return usualInterval;
    return std::clamp<double>(
        interval, SlideshowSettings::leastInterval, SlideshowSettings::mostInterval);
}

} // namespace

SlideshowSettings::SlideshowSettings(platform::UserDefaults& userDefaults)
    : _userDefaults(userDefaults), _interval(intervalIn(userDefaults)),
      _transition(transitionStyleOf(userDefaults.integerForKey(transitionKey).value_or(0))),
      _isLoopPlay(userDefaults.boolForKey(loopKey).value_or(true)),
      _isShuffled(userDefaults.boolForKey(shuffleKey).value_or(false)) {}

void SlideshowSettings::setInterval(int seconds) {
    _interval = std::clamp(seconds, leastInterval, mostInterval);
    _userDefaults.setDouble(_interval, intervalKey);
}

void SlideshowSettings::stepInterval(int direction) {
    const double next = direction > 0 ? std::floor(_interval) + 1 : std::ceil(_interval) - 1;
    setInterval(static_cast<int>(next));
}

void SlideshowSettings::setTransition(TransitionStyle style) {
    _transition = style;
    _userDefaults.setInteger(static_cast<int>(style), transitionKey);
}

void SlideshowSettings::setLoopPlay(bool isLoopPlay) {
    _isLoopPlay = isLoopPlay;
    _userDefaults.setBool(isLoopPlay, loopKey);
}

void SlideshowSettings::setShuffled(bool isShuffled) {
    _isShuffled = isShuffled;
    _userDefaults.setBool(isShuffled, shuffleKey);
}
