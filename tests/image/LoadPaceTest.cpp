#include "image/large/LoadPace.h"

#include "support/Support.h"

#include <set>

using namespace std::chrono_literals;
using Duration = LoadPace::Duration;

namespace {

constexpr double pixels = 24e6;

/// A key held down over many pictures, and a decoder that takes its time, by a clock of our own.
struct HeldKey {
    HeldKey(Duration interval, Duration decode) : _interval(interval), _decode(decode) {}

    void hold(int steps) {
        for (int step = 0; step < steps; ++step) {
            pace.didStep(++_focus, pixels);
            if (_running && *_running < _focus) {
                ++stopped;
                pace.didStop(now - (_ready - _decode), pixels);
                _running.reset();
            }
            runUntil(now + _interval + Duration(_random() % 4'000'000) - 2ms);
        }
    }
    void runUntil(LoadPace::Time end) {
        for (;;) {
            if (_running && _ready <= end) {
                now = _ready;
                pace.didLoad(_decode, pixels);
                _loaded.insert(*_running);
                if (*_running == _focus) ++sharp;
                _running.reset();
            }
            if (!_running) begin();
            if (!_running || _ready > end) break;
        }
        now = end;
    }

    LoadPace::Time now{};
    LoadPace pace{[this] { return now; }};
    int begun = 0;
    int stopped = 0;
    int passed = 0;
    int sharp = 0;

private:
    /// The line: the focus, then its neighbours.
    void begin() {
        for (int index = _focus; index <= _focus + 7; ++index) {
            if (_loaded.contains(index) || !pace.mayBegin(index, pixels)) continue;
            ++begun;
            if (index < _focus) ++passed;
            _running = index;
            _ready = now + _decode;
            return;
        }
    }

    const Duration _interval;
    const Duration _decode;
    int _focus = 0;
    std::optional<int> _running;
    LoadPace::Time _ready;
    std::set<int> _loaded;
    std::mt19937 _random{7};
};

} // namespace

TEST(LoadPaceTest, OfWhatBeginsWhileAKeyIsHeldLittleIsWasted) {
    for (const Duration interval : {Duration(16ms), Duration(33ms), Duration(60ms)}) {
        for (const Duration decode :
             {Duration(20ms), Duration(60ms), Duration(110ms), Duration(160ms), Duration(700ms)}) {
            HeldKey key(interval, decode);
            key.pace.didLoad(decode / 2, pixels); // the first one was a quick one
            key.hold(3);                          // until the haste shows
            key.begun = key.stopped = key.passed = 0;
            key.hold(300);
            const auto told = [&] {
                return testing::Message()
                       << interval.count() / 1000000 << " ms, decode " << decode.count() / 1000000
                       << " ms: " << key.begun << " begun, " << key.stopped << " stopped";
            };
            EXPECT_LE(key.passed * 10, key.begun) << told();
            EXPECT_LE((key.stopped - 1) * 3, key.begun) << told(); // one ran before
            const int least = decode < interval ? 200 : decode < 4 * interval ? 20 : 0;
            EXPECT_GE(key.begun, least) << told();
        }
    }
}

TEST(LoadPaceTest, APauseOrTheKeyLetGoEndsTheHasteAndSingleStepsAreNone) {
    HeldKey key(33ms, 150ms);
    key.pace.didStep(100, pixels);
    key.now += 400ms;
    key.pace.didStep(101, pixels);
    EXPECT_TRUE(key.pace.mayBegin(101, pixels));
    const auto hurry = [&] {
        for (int index = 102; index < 105; ++index) {
            key.now += 33ms;
            key.pace.didStep(index, pixels);
        }
        EXPECT_FALSE(key.pace.mayBegin(104, pixels));
    };
    hurry();
    const auto wait = key.pace.untilPause();
    ASSERT_TRUE(wait);
    EXPECT_LE(*wait, 150ms);
    key.now += *wait - 1ms;
    EXPECT_FALSE(key.pace.mayBegin(104, pixels));
    key.now += 1ms;
    EXPECT_TRUE(key.pace.mayBegin(104, pixels));
    EXPECT_FALSE(key.pace.untilPause());
    hurry();
    key.pace.didEndStepping();
    EXPECT_TRUE(key.pace.mayBegin(104, pixels));
    // Going back, what lies ahead has lower indices; and small pictures are there at once.
    hurry();
    key.now += 33ms;
    key.pace.didStep(103, pixels);
    EXPECT_FALSE(key.pace.mayBegin(113, pixels));
    EXPECT_TRUE(key.pace.mayBegin(93, pixels));
    EXPECT_TRUE(key.pace.mayBegin(101, pixels / 50));
}
