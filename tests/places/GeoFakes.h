#pragma once

#include "places/Geocoder.h"
#include "places/PBGeoManager.h"
#include "platform/work/Mutex.h"
#include "support/Support.h"

#include <deque>

/// A geocoder whose requests wait for the test to answer them, on whatever thread it likes.
struct FakeGeocoder final : places::Geocoder {
    void reverseGeocodeLocation(PBLocation location, Completion completion) override {
        const platform::Lock lock(_mutex);
        _asked.push_back(location);
        _waiting.push_back(std::move(completion));
        _mostWaiting = std::max(_mostWaiting, _waiting.size());
    }
    void cancelGeocode() override {
        while (answer({{}, places::GeocodeError::Cancelled})) {
        }
    }

    /// Answers the oldest request; false if none waits.
    bool answer(const places::GeocodeAnswer& answer) {
        Completion completion;
        {
            const platform::Lock lock(_mutex);
            if (_waiting.empty()) return false;
            completion = std::move(_waiting.front());
            _waiting.pop_front();
        }
        completion(answer);
        return true;
    }
    [[nodiscard]] std::vector<PBLocation> asked() const {
        const platform::Lock lock(_mutex);
        return _asked;
    }
    [[nodiscard]] std::size_t mostWaiting() const {
        const platform::Lock lock(_mutex);
        return _mostWaiting;
    }

private:
    mutable platform::Mutex _mutex;
    std::vector<PBLocation> _asked VELMORA_GUARDED_BY(_mutex);
    std::deque<Completion> _waiting VELMORA_GUARDED_BY(_mutex);
    std::size_t _mostWaiting VELMORA_GUARDED_BY(_mutex) = 0;
};

/// Stands for the main loop: the test runs what was posted.
struct PostedCalls {
    [[nodiscard]] PBGeoManager::MainThreadPoster poster() {
        return [this](std::function<void()> call) {
            const platform::Lock lock(_mutex);
            _calls.push_back(std::move(call));
        };
    }
    void run() {
        std::vector<std::function<void()>> calls;
        {
            const platform::Lock lock(_mutex);
            calls.swap(_calls);
        }
        for (const auto& call : calls)
            call();
    }

private:
    platform::Mutex _mutex;
    std::vector<std::function<void()>> _calls VELMORA_GUARDED_BY(_mutex);
};

inline places::GeocodeAnswer cityAnswer(const QString& city) {
    return {{{PBDictionary{{u"City"_s, city}}}}, places::GeocodeError::None};
}
