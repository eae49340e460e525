#include "group/PBImageFileItem.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/program/UserDefaults.h"
#include "support/Support.h"
#include "viewer/slideshow/PBSlideShowViewController.h"
#include "viewer/slideshow/SlideshowHost.h"
#include "viewer/slideshow/SlideshowPictures.h"
#include "viewer/slideshow/SlideshowStage.h"

#include <QKeyEvent>

namespace {

using Timer = SlideshowClock::Timer;

struct FakeClock final : SlideshowClock {
    struct Running {
        double left = 0; // seconds
        std::function<void()> fired;
    };
    std::map<Timer, Running> running;

    void start(Timer timer, std::chrono::milliseconds time, std::function<void()> fired) override {
        running[timer] = {static_cast<double>(time.count()) / 1000, std::move(fired)};
    }
    void stop(Timer timer) override { running.erase(timer); }
    bool isRunning(Timer timer) const override { return running.contains(timer); }
    void advance(double seconds) {
        for (const Timer timer : {Timer::Interval, Timer::HideControls}) {
            const auto found = running.find(timer);
            if (found == running.end()) continue;
            found->second.left -= seconds;
            if (found->second.left > 1e-6) continue;
            const auto fired = std::move(found->second.fired);
            running.erase(found);
            fired();
        }
    }
};

/// Pictures whose width tells the photograph: its id.
struct FakePictures final : SlideshowPictures {
    std::set<qint64> ready;
    std::set<qint64> damaged;
    QStringList preloads; // the ids of each call
    Listener listener;

    SlideshowPicture pictureOf(const IndexedImage& image) override {
        const qint64 id = image.item->fileId();
        if (damaged.contains(id)) return {false, {}};
        if (!ready.contains(id)) return {true, {}};
        return {false, QImage(static_cast<int>(id), 1, QImage::Format_RGB32)};
    }
    void preload(std::span<const IndexedImage> images, std::int64_t) override {
        preloads.append(support::listed(images, [](const IndexedImage& image) {
                            return QString::number(image.item->fileId());
                        }).join(u' '));
    }
    void setListener(Listener told) override { listener = std::move(told); }
};

struct FakeStage final : SlideshowStage {
    QStringList shown; // "id" or "none", with angle and duration where they are not the usual ones
    double duration = 0;
    TransitionStyle style{};
    bool isRunning = false;
    Ended ended;

    void setTransitionStyle(TransitionStyle to) override { style = to; }
    void setTransitionDuration(double seconds) override { duration = seconds; }
    void transitionToImage(const QImage& image, double angle) override {
        QString word = image.isNull() ? u"none"_s : QString::number(image.width());
        if (angle != 0) word += u'@' + QString::number(angle);
        if (duration != 1.0) word += u'/' + QString::number(duration);
        shown.append(word);
        isRunning = true;
    }
    void clearTransition() override { isRunning = false; }
    void setAnimationDidStop(Ended told) override { ended = std::move(told); }
    void end() {
        if (std::exchange(isRunning, false)) ended(true);
    }
};

struct FakeInhibitor final : platform::IdleInhibitor {
    bool is = false;
    void inhibit(const QString& reason) override {
        EXPECT_FALSE(reason.isEmpty());
        is = true;
    }
    void release() override { is = false; }
    bool isInhibited() const override { return is; }
};

struct FakeHost final : SlideshowHost {
    bool isMode = true;
    std::shared_ptr<PBImageFileItem> focus;
    int moves = 0;
    void setIsSlideShowMode(bool is) override { isMode = is; }
    std::shared_ptr<PBImageFileItem> focusImageFileItem() const override { return focus; }
    void goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) override {
        focus = item;
        ++moves;
    }
};

/// Photographs with ids from 1 up.
struct SlideshowTest : testing::Test {
    QTemporaryDir folder;
    platform::UserDefaults settings{folder.filePath(u"settings.ini"_s)};
    FakeClock clock;
    FakePictures pictures;
    FakeStage stage;
    FakeInhibitor inhibitor;
    FakeHost host;
    std::unique_ptr<PBSlideShowViewController> show;
    PBImageFileArray items;
    std::vector<bool> controls; // what the bar was told
    bool isOver = false;

    void begin(int count, std::int64_t index = 0, bool areReady = true) {
        items = {};
        for (int id = 1; id <= count; ++id) {
            items.push_back(PBImageFileItem::imageFileItemWithId(id, 1, u"p"_s, 1, 0));
            if (areReady) pictures.ready.insert(id);
        }
        host.focus = items[static_cast<std::size_t>(index)];
        if (!show) make();
        show->setFileItemArray(items, index);
        show->play();
    }
    void make() {
        show = std::make_unique<PBSlideShowViewController>(
            PBSlideShowViewController::Parts{settings, pictures, stage, clock, inhibitor, host});
        QObject::connect(
            show.get(), &PBSlideShowViewController::showController, show.get(),
            [this](bool isShown) { controls.push_back(isShown); });
        QObject::connect(
            show.get(), &PBSlideShowViewController::didExit, show.get(), [this] { isOver = true; });
    }
    /// One picture further, as time does it.
    void cycle(double interval = 2.0) {
        stage.end();
        clock.advance(interval);
    }
    void load(qint64 id) {
        pictures.ready.insert(id);
        pictures.listener(*items[static_cast<std::size_t>(id - 1)]);
    }
    bool press(int key, Qt::KeyboardModifiers modifiers = {}) {
        return show->doKeyDown(QKeyEvent(QEvent::KeyPress, key, modifiers));
    }
    QString shown() { return std::exchange(stage.shown, {}).join(u' '); }
};

TEST_F(SlideshowTest, eachPictureWaitsForTransitionAndIntervalAndTheListGoesRound) {
    begin(3, 1);
    EXPECT_TRUE(inhibitor.is);
    clock.advance(10); // the transition isn't over
    EXPECT_EQ(shown(), u"2"_s);
    stage.end();
    clock.advance(1.9);
    EXPECT_EQ(shown(), QString());
    clock.advance(0.2);
    EXPECT_EQ(shown(), u"3"_s);
    cycle();
    cycle();
    EXPECT_EQ(shown(), u"1 2"_s);
    // An interval counts from when it begins, and one that ended early is nobody's.
    show->intervalMenuClicked(5);
    stage.ended(false);
    EXPECT_FALSE(clock.isRunning(Timer::Interval));
    cycle(4.9);
    EXPECT_EQ(shown(), QString());
    clock.advance(0.2);
    EXPECT_EQ(shown(), u"3"_s);

    begin(1);
    cycle(5);
    cycle(5);
    EXPECT_EQ(shown(), u"1 1 1"_s); // of one photograph
}

TEST_F(SlideshowTest, aSlowPictureLengthensTheShowAndADamagedOneIsBlack) {
    begin(4, 0, false);
    EXPECT_EQ(shown(), QString());
    load(2); // not the one that is waited for
    EXPECT_EQ(shown(), QString());
    load(1);
    load(1); // another size of what is shown
    EXPECT_EQ(shown(), u"1"_s);
    pictures.damaged.insert(3);
    cycle();
    cycle();
    EXPECT_EQ(shown(), u"2 none"_s);
    cycle();
    stage.end();
    clock.advance(60);
    EXPECT_EQ(shown(), QString());
    items[3]->setRotateAngle(90); // counter-clockwise
    load(4);
    EXPECT_EQ(shown(), u"4@-90"_s);
    cycle();
    EXPECT_EQ(shown(), u"1"_s);
    // The line of loads was cleared, and nobody tells.
    pictures.ready.erase(2);
    cycle();
    pictures.ready.insert(2);
    clock.advance(1);
    EXPECT_EQ(shown(), u"2"_s);
}

TEST_F(SlideshowTest, pausedItStaysAndGoesByHandAndResumesWithTheNext) {
    begin(3);
    press(Qt::Key_Right);
    press(Qt::Key_End);
    EXPECT_EQ(shown(), u"1"_s); // while it plays, steps do nothing
    EXPECT_FALSE(show->canNext());
    stage.end();
    press(Qt::Key_Space);
    EXPECT_FALSE(inhibitor.is);
    cycle(60);
    EXPECT_EQ(shown(), QString());
    for (const int key :
         {Qt::Key_Left, Qt::Key_PageUp, Qt::Key_Right, Qt::Key_PageDown, Qt::Key_Right, Qt::Key_End,
          Qt::Key_Home})
        EXPECT_TRUE(press(key));
    EXPECT_EQ(shown(), u"3/0.5 2/0.5 3/0.5 1/0.5 2/0.5 3/0.5 1/0.5"_s);
    cycle(60);
    EXPECT_EQ(shown(), QString());
    press(Qt::Key_Space);
    EXPECT_TRUE(inhibitor.is);
    cycle();
    EXPECT_EQ(shown(), u"2 3"_s);
    // A pause in the middle of a transition, and one that was asked for while a picture loads.
    press(Qt::Key_Space);
    cycle(60);
    pictures.ready.clear();
    press(Qt::Key_Left);
    load(2);
    cycle(60);
    EXPECT_EQ(shown(), u"2/0.5"_s);
    EXPECT_FALSE(press(Qt::Key_Left, Qt::AltModifier) || press(Qt::Key_A));
}

TEST_F(SlideshowTest, withoutLoopItPausesAtTheLastAndStepsEndAtTheEnds) {
    make();
    show->setLoopPlay(false);
    begin(3, 1);
    EXPECT_EQ(pictures.preloads.first(), u"3 2"_s);
    cycle();
    EXPECT_EQ(pictures.preloads.size(), 2); // nothing lies ahead of the last
    cycle(60);
    EXPECT_EQ(shown(), u"2 3"_s);
    EXPECT_TRUE(show->isPause());
    EXPECT_FALSE(inhibitor.is);
    EXPECT_TRUE(show->canPrev() && !show->canNext());
    press(Qt::Key_Right);
    EXPECT_EQ(shown(), QString());
    press(Qt::Key_Home);
    EXPECT_TRUE(!show->canPrev() && show->canNext());
    press(Qt::Key_Left);
    EXPECT_EQ(shown(), u"1/0.5"_s);
    press(Qt::Key_End);
    press(Qt::Key_Space);
    EXPECT_EQ(shown(), u"3/0.5 1"_s); // on from the last is the first
    // Loop is taken away while the last one waits for its interval.
    show->setLoopPlay(true);
    cycle();
    cycle();
    stage.end();
    show->setLoopPlay(false);
    clock.advance(60);
    EXPECT_EQ(shown(), u"2 3"_s);
    EXPECT_TRUE(show->isPause());
}

TEST_F(SlideshowTest, whatComesNextIsLoadedAheadTheNearestLast) {
    begin(9, 7);
    EXPECT_EQ(pictures.preloads, QStringList({u"4 3 2 1 9 8"_s, u"5 4 3 2 1 9"_s}));
    show->playOrPause();
    pictures.preloads.clear();
    show->prevImage();
    EXPECT_EQ(pictures.preloads, QStringList({u"2 3 4 5 6 7"_s, u"1 2 3 4 5 6"_s}));
}

TEST_F(SlideshowTest, leavingGoesToThePhotographShownLastOnce) {
    begin(3);
    cycle();
    show->exitSlideshow();
    show->exitSlideshow();
    show->play(); // as from a call that was on its way
    EXPECT_EQ(host.focus, items[1]);
    EXPECT_FALSE(host.isMode || isOver);
    clock.advance(3);
    ASSERT_TRUE(support::spinUntil([this] { return isOver; }));
    EXPECT_TRUE(show->isStopped() && show->isPause());
    EXPECT_TRUE(clock.running.empty());
    EXPECT_FALSE(inhibitor.is);
    EXPECT_TRUE(controls.back()); // the cursor, too
    EXPECT_EQ(host.moves, 1);
    load(3);
    EXPECT_EQ(shown(), u"1 2"_s);

    for (const int key : {Qt::Key_Escape, Qt::Key_F5, Qt::Key_Q}) {
        isOver = false;
        host.isMode = true;
        begin(3);
        EXPECT_TRUE(show->doKeyDown(QKeyEvent(QEvent::KeyPress, key, {}, {}, true)));
        EXPECT_TRUE(host.isMode) << "held since before the show";
        EXPECT_TRUE(press(key));
        EXPECT_TRUE(support::spinUntil([this] { return isOver; }));
    }
    EXPECT_EQ(host.moves, 1); // it stood there already
}

TEST_F(SlideshowTest, controlsHideAfterThreeSecondsAwayFromThem) {
    begin(2);
    clock.advance(2.9);
    show->mouseMoved(false);
    EXPECT_EQ(controls, std::vector({true}));
    clock.advance(2.9);
    EXPECT_TRUE(controls.back());
    clock.advance(0.2);
    EXPECT_FALSE(controls.back());
    show->mouseMoved(true);
    clock.advance(60);
    EXPECT_TRUE(controls.back());
    show->mouseMoved(false);
    show->holdControls(true); // a menu
    clock.advance(60);
    EXPECT_TRUE(controls.back());
    show->transitionMenuClicked(TransitionStyle::Ripple);
    clock.advance(3.1);
    EXPECT_FALSE(controls.back());
}

TEST_F(SlideshowTest, shuffledItShowsEachOnceAndStaysWhereItIsWhenThatChanges) {
    make();
    show->setShuffled(true);
    begin(40, 17);
    for (int i = 0; i < 40; ++i)
        cycle();
    QStringList way = shown().split(u' ');
    EXPECT_EQ(way.first(), u"18"_s);
    EXPECT_EQ(way.takeLast(), u"18"_s); // round, by the same way
    EXPECT_EQ(QSet<QString>(way.begin(), way.end()).size(), 40);
    EXPECT_FALSE(std::ranges::is_sorted(way, {}, [](const QString& id) { return id.toInt(); }));
    const auto item = show->currentItem();
    show->setShuffled(false);
    EXPECT_EQ(show->currentItem(), item);
    cycle();
    EXPECT_EQ(shown(), u"19"_s);
    show->setShuffled(true);
    EXPECT_EQ(show->currentItem()->fileId(), 19);
}

TEST_F(SlideshowTest, settingsAreClampedAndKept) {
    using Row = std::pair<const char*, const char*>;
    for (const auto& [stored, expected] :
         {Row("SlideshowInterval=0.5 SlideshowTransition=12", "1 11 loop"),
          Row("SlideshowInterval=9 SlideshowTransition=-1 SlideshowLoop=false", "5 0"),
          Row("SlideshowTransition=7 SlideshowShuffle=true", "2 7 loop shuffle"),
          Row("SlideshowInterval=nan", "2 0 loop"), Row("SlideshowInterval=2.5", "2.5 0 loop")}) {
        // A file of its own each: QSettings takes one of the same size and time for the same.
        const QTemporaryDir own;
        const QString file = own.filePath(u"stored.ini"_s);
        support::writeFile(
            file, support::words(stored).join(u'\n').prepend(u"[General]\n"_s).toUtf8());
        platform::UserDefaults defaults(file);
        const SlideshowSettings read(defaults);
        QString told = QString::number(read.interval()) + u' ' +
                       QString::number(static_cast<int>(read.transition()));
        if (read.isLoopPlay()) told += u" loop"_s;
        if (read.isShuffled()) told += u" shuffle"_s;
        EXPECT_EQ(told, QString::fromLatin1(expected)) << stored;
    }
    settings.setDouble(2.5, u"SlideshowInterval"_s);
    begin(2);
    for (const auto& [key, interval] :
         {std::pair(Qt::Key_Equal, 3),
          {Qt::Key_Plus, 4},
          {Qt::Key_Minus, 3},
          {Qt::Key_Minus, 2},
          {Qt::Key_Minus, 1},
          {Qt::Key_Minus, 1}}) {
        press(key);
        EXPECT_EQ(settings.doubleForKey(u"SlideshowInterval"_s), interval);
    }
    show->transitionMenuClicked(TransitionStyle::PageCurl);
    EXPECT_EQ(stage.style, TransitionStyle::PageCurl);
    EXPECT_EQ(settings.integerForKey(u"SlideshowTransition"_s), 9);
}

} // namespace
