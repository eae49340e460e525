#include "image/large/LoadPace.h"

#include "support/Support.h"

using namespace std::chrono_literals;
using Duration = LoadPace::Duration;

namespace {

constexpr double pixels = 24e6;

LoadPace::Load loadOf(int index, bool isOriginal = false) {
    return {.index = index, .pixels = pixels, .isOriginal = isOriginal};
}

/// A key held down over many pictures, and a decoder that takes its time, by a clock of our own.
struct HeldKey {
    HeldKey(Duration interval, Duration decode) : _interval(interval), _decode(decode) {}

    void hold(int steps) {
        for (int step = 0; step < steps; ++step) {
            pace.didStep(++_focus);
            if (_running && *_running < _focus) {
                ++stopped;
                pace.didStop(now - (_ready - _decode), loadOf(*_running));
                _running.reset();
            }
            runUntil(now + _interval + Duration(_random() % 4'000'000) - 2ms);
        }
    }
    void runUntil(LoadPace::Time end) {
        for (begin(); _running && _ready <= end; begin()) {
            now = _ready;
            pace.didLoad(_decode, loadOf(*_running));
            _loaded.insert(*_running);
            _running.reset();
        }
        now = end;
    }

    LoadPace::Time now{};
    LoadPace pace{[this] { return now; }};
    int begun = 0;
    int stopped = 0;
    int passed = 0;

private:
    /// The line: the focus, then its neighbours.
    void begin() {
        for (int index = _focus; !_running && index <= _focus + 7; ++index) {
            if (_loaded.contains(index) || !pace.mayBegin(loadOf(index))) continue;
            ++begun;
            if (index < _focus) ++passed;
            _running = index;
            _ready = now + _decode;
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
            key.pace.didLoad(decode / 2, loadOf(0));                // the first one was a quick one
            if (decode < interval) key.pace.didLoad(1s, loadOf(0)); // and one had bad luck
            key.hold(3);                                            // until the haste shows
            key.begun = key.stopped = key.passed = 0;
            key.hold(300);
            SCOPED_TRACE(
                testing::Message() << interval / 1ms << " ms, decode " << decode / 1ms << " ms: "
                                   << key.begun << " begun, " << key.stopped << " stopped");
            EXPECT_LE(key.passed * 10, key.begun);
            // One ran before, and one showed how long they take.
            EXPECT_LE((key.stopped - 2) * 3, key.begun);
            const int least = decode < interval ? 200 : decode < 4 * interval ? 20 : 0;
            EXPECT_GE(key.begun, least);
        }
    }
}

TEST(LoadPaceTest, APauseOrTheKeyLetGoEndsTheHasteAndSingleStepsAreNone) {
    HeldKey key(33ms, 150ms);
    key.pace.didStep(100);
    key.now += 400ms;
    key.pace.didStep(101);
    EXPECT_TRUE(key.pace.mayBegin(loadOf(101)));
    const auto hurry = [&] {
        for (int index = 102; index < 105; ++index) {
            key.now += 33ms;
            key.pace.didStep(index);
        }
        EXPECT_FALSE(key.pace.mayBegin(loadOf(104)));
    };
    hurry();
    const auto wait = key.pace.untilPause();
    ASSERT_TRUE(wait);
    EXPECT_LE(*wait, 150ms);
    key.now += *wait - 1ms;
    EXPECT_FALSE(key.pace.mayBegin(loadOf(104)));
    key.now += 1ms;
    EXPECT_TRUE(key.pace.mayBegin(loadOf(104)));
    EXPECT_FALSE(key.pace.untilPause());
    hurry();
    key.pace.didEndStepping();
    EXPECT_TRUE(key.pace.mayBegin(loadOf(104)));
    // Going back, what lies ahead has lower indices; and small pictures are there at once.
    hurry();
    key.now += 33ms;
    key.pace.didStep(103);
    EXPECT_FALSE(key.pace.mayBegin(loadOf(113)));
    EXPECT_TRUE(key.pace.mayBegin(loadOf(93)));
    EXPECT_TRUE(key.pace.mayBegin({.index = 101, .pixels = pixels / 50}));
    // What was seen of the one kind of loads says nothing of the other.
    key.pace.didLoad(1ms, loadOf(103));
    EXPECT_TRUE(key.pace.mayBegin(loadOf(103)));
    EXPECT_FALSE(key.pace.mayBegin(loadOf(103, true)));
}
