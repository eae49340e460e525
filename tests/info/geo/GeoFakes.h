#pragma once

#include "info/geo/PBGeoManager.h"
#include "platform/Geocoder.h"
#include "support/Support.h"

#include <deque>
#include <mutex>

/// A geocoder whose requests wait for the test to answer them, on whatever thread it likes.
struct FakeGeocoder final : platform::Geocoder {
    void reverseGeocodeLocation(PBLocation location, Completion completion) override {
        const std::lock_guard lock(_mutex);
        _asked.push_back(location);
        _waiting.push_back(std::move(completion));
        _mostWaiting = std::max(_mostWaiting, _waiting.size());
    }
    void cancelGeocode() override { answerAll({{}, platform::GeocodeError::Cancelled}); }

    /// Answers the oldest request; false if none waits.
    bool answer(const platform::GeocodeAnswer& answer) {
        Completion completion;
        {
            const std::lock_guard lock(_mutex);
            if (_waiting.empty()) return false;
            completion = std::move(_waiting.front());
            _waiting.pop_front();
        }
        completion(answer);
        return true;
    }
    [[nodiscard]] std::vector<PBLocation> asked() const {
        const std::lock_guard lock(_mutex);
        return _asked;
    }
    [[nodiscard]] std::size_t mostWaiting() const {
        const std::lock_guard lock(_mutex);
        return _mostWaiting;
    }

private:
    void answerAll(const platform::GeocodeAnswer& all) {
        while (answer(all)) {
        }
    }

    mutable std::mutex _mutex; // guards all below
    std::vector<PBLocation> _asked;
    std::deque<Completion> _waiting;
    std::size_t _mostWaiting = 0;
};

/// Stands for the main loop: the test runs what was posted.
struct PostedCalls {
    [[nodiscard]] PBGeoManager::MainThreadPoster poster() {
        return [this](std::function<void()> call) {
            const std::lock_guard lock(_mutex);
            _calls.push_back(std::move(call));
        };
    }
    void run() {
        std::vector<std::function<void()>> calls;
        {
            const std::lock_guard lock(_mutex);
            calls.swap(_calls);
        }
        for (const auto& call : calls)
            call();
    }

private:
    std::mutex _mutex;
    std::vector<std::function<void()>> _calls;
};

inline PBDictionary cityAddress(const QString& city) {
    return {{u"City"_s, city}};
}

inline platform::GeocodeAnswer cityAnswer(const QString& city) {
    return {{{PBValue(cityAddress(city))}}, platform::GeocodeError::None};
}
