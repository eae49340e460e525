#include "codec/process/HelperShelf.h"

#include "codec/process/DecoderHelper.h"
#include "codec/process/Protocol.h"
#include "platform/program/StandardError.h"

#include <algorithm>
#include <future>
#include <numeric>
#include <utility>

namespace codec::process {

namespace {

/// Processes beyond the settings: who holds so many of them waits like everybody.
constexpr int mostSurplus = 8;

constexpr std::size_t indexOf(Urgency urgency) {
    return static_cast<std::size_t>(urgency);
}

} // namespace

HelperShelf::Lease::Lease(
    std::shared_ptr<HelperShelf> shelf, Urgency urgency, const std::stop_token& stop)
    : _shelf(std::move(shelf)), _urgency(urgency), _helper(_shelf->take(stop, urgency)) {}

HelperShelf::Lease::~Lease() {
    if (_helper) _shelf->giveBack(std::move(*_helper), _urgency, _isInBackground);
}

bool HelperShelf::Lease::isUsable() {
    if (!_helper) return false;
    if (!isAlive()) *_helper = _shelf->startHelper();
    return *_helper != nullptr;
}

bool HelperShelf::Lease::isAlive() const {
    return _helper && *_helper && (*_helper)->isAlive();
}

void HelperShelf::Lease::setInBackground() {
    if (!_helper || std::exchange(_isInBackground, true)) return;
    _shelf->stopWaitingFor(_urgency);
}

HelperShelf::HelperShelf(Settings settings) : _settings(std::move(settings)) {
    _idle.resize(
        static_cast<std::size_t>(_settings.shared) + static_cast<std::size_t>(_settings.reserved));
}

HelperShelf::~HelperShelf() = default;

void HelperShelf::start() {
    _starter.addOperation([this] {
        while (isAnyMissing()) {
            Helper helper = DecoderHelper::start(_settings.executable, _settings.addressSpaceBytes);
            if (!helper) return;
            putOnShelf(std::move(helper));
        }
    });
}

void HelperShelf::startOne() {
    if (Helper helper = startHelper()) putOnShelf(std::move(helper));
}

void HelperShelf::putOnShelf(Helper helper) {
    const platform::Lock lock(_mutex);
    const auto missing = std::ranges::find(_idle, Helper());
    if (missing != _idle.end()) *missing = std::move(helper);
}

int HelperShelf::waiting() {
    const platform::Lock lock(_mutex);
    return std::accumulate(_waiting.begin(), _waiting.end(), 0);
}

bool HelperShelf::isAnyMissing() {
    const platform::Lock lock(_mutex);
    return std::ranges::find(_idle, Helper()) != _idle.end();
}

HelperShelf::Helper HelperShelf::startHelper() {
    std::promise<Helper> started;
    _starter.addOperation([&] {
        started.set_value(DecoderHelper::start(_settings.executable, _settings.addressSpaceBytes));
    });
    return started.get_future().get();
}

bool HelperShelf::hasProcessFor(Urgency urgency) const {
    if (urgency == Urgency::Focus) return !_idle.empty() || _surplus < mostSurplus;
    if (_idle.empty()) return false;
    if (!isThumbnail(urgency)) return true;
    return _thumbnailsAtWork < _settings.shared && _focusAtWork == 0;
}

bool HelperShelf::isNext(Urgency urgency) const {
    if (!hasProcessFor(urgency)) return false;
    for (std::size_t before = 0; before < indexOf(urgency); ++before)
        if (_waiting[before] > 0 && hasProcessFor(static_cast<Urgency>(before))) return false;
    return true;
}

std::optional<HelperShelf::Helper> HelperShelf::take(const std::stop_token& stop, Urgency urgency) {
    platform::Lock lock(_mutex);
    ++_waiting[indexOf(urgency)];
    const bool isTaken = _changed.waitUnlessStopped(lock, stop, [&] {
        _mutex.assertHeld();
        return isNext(urgency);
    });
    --_waiting[indexOf(urgency)];
    // Those that stood back for this one.
    _changed.notifyAll();
    if (!isTaken) return std::nullopt;
    if (isThumbnail(urgency)) ++_thumbnailsAtWork;
    if (urgency == Urgency::Focus) ++_focusAtWork;
    if (_idle.empty()) {
        ++_surplus;
        return Helper();
    }
    // One that runs, where there is one.
    const auto running = std::ranges::find_if(_idle, [](const Helper& helper) { return !!helper; });
    const auto taken = running != _idle.end() ? running : _idle.begin();
    Helper helper = std::move(*taken);
    _idle.erase(taken);
    return helper;
}

void HelperShelf::stopWaitingFor(Urgency urgency) {
    const platform::Lock lock(_mutex);
    if (urgency == Urgency::Focus) --_focusAtWork;
    if (isThumbnail(urgency)) --_thumbnailsAtWork;
    _changed.notifyAll();
}

void HelperShelf::giveBack(Helper helper, Urgency urgency, bool wasInBackground) {
    if (!wasInBackground) stopWaitingFor(urgency);
    const bool isLost = !helper || !helper->isAlive();
    {
        const platform::Lock lock(_mutex);
        if (helper) tellRefusals(*helper);
        if (_surplus > 0) {
            // In place of one that is not running, or else one too many.
            --_surplus;
            const auto missing = std::ranges::find(_idle, Helper());
            if (!isLost && missing != _idle.end()) *missing = std::move(helper);
        } else {
            _idle.push_back(isLost ? Helper() : std::move(helper));
        }
        _changed.notifyAll();
    }
    // Replaced right away, so that the next picture does not wait for the start.
    if (isLost) start();
}

void HelperShelf::tellRefusals(const DecoderHelper& helper) {
    const std::uint64_t refusals = helper.refusals().value_or(0);
    if (refusals == 0 || std::exchange(_toldRefusals, true)) return;
    QStringList parts;
    if (refusals & RefusedPrivileges) parts.append(QStringLiteral("privileges"));
    if (refusals & RefusedFilter) parts.append(QStringLiteral("system calls"));
    if (refusals & RefusedMemoryLimit) parts.append(QStringLiteral("memory"));
    platform::complain(QStringLiteral("this system does not let decoders be confined in their %1; "
                                      "pictures are still read in processes of their own")
                           .arg(parts.join(QStringLiteral(" and "))));
}

} // namespace codec::process
