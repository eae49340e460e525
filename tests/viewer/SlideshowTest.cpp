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

/// Photographs with ids from 1 up, of which the width of the picture tells. The surroundings of the
/// show are the test itself.
struct SlideshowTest : testing::Test,
                       SlideshowHost,
                       SlideshowPictures,
                       SlideshowClock,
                       SlideshowStage,
                       platform::IdleInhibitor {
    void start(Timer timer, std::chrono::milliseconds time, std::function<void()> fired) override {
        running[timer] = {static_cast<double>(time.count()) / 1000, std::move(fired)};
    }
    void stop(Timer timer) override { running.erase(timer); }
    bool isRunning(Timer timer) const override { return running.contains(timer); }
    void advance(double seconds) {
        for (const Timer timer : {Timer::Interval, Timer::HideControls}) {
            const auto found = running.find(timer);
            if (found == running.end()) continue;
            found->second.first -= seconds;
            if (found->second.first > 1e-6) continue;
            running.extract(found).mapped().second();
        }
    }
    void setTransitionStyle(TransitionStyle to) override { style = to; }
    void setTransitionDuration(double seconds) override { duration = seconds; }
    void transitionToImage(const QImage& image, double angle) override {
        pictures += image.isNull() ? u"none"_s : QString::number(image.width());
        if (angle != 0) pictures.back() += u'@' + QString::number(angle);
        if (duration != 1.0) pictures.back() += u'/' + QString::number(duration);
        isChanging = true;
    }
    void clearTransition() override { isChanging = false; }
    void setAnimationDidStop(Ended told) override { ended = std::move(told); }
    void end() {
        if (std::exchange(isChanging, false)) ended(true);
    }
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
    void setIsSlideShowMode(bool is) override { isMode = is; }
    std::shared_ptr<PBImageFileItem> focusImageFileItem() const override { return focus; }
    void goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) override {
        focus = item;
        ++moves;
    }
    void inhibit(const QString& reason) override { isAwake = !reason.isEmpty(); }
    void release() override { isAwake = false; }
    bool isInhibited() const override { return isAwake; }

    QTemporaryDir folder;
    platform::UserDefaults settings{folder.filePath(u"settings.ini"_s)};
    /// The seconds that are left, and what comes then.
    std::map<Timer, std::pair<double, std::function<void()>>> running;
    std::set<qint64> ready;
    std::set<qint64> damaged;
    QStringList preloads; // the ids of each call
    Listener listener;
    QStringList pictures; // "id" or "none", with angle and duration if they are not the usual ones
    double duration = 0;
    TransitionStyle style{};
    bool isChanging = false;
    Ended ended;
    bool isAwake = false;
    bool isMode = true;
    std::shared_ptr<PBImageFileItem> focus;
    int moves = 0;
    std::unique_ptr<PBSlideShowViewController> show;
    PBImageFileArray items;
    std::vector<bool> controls; // what the bar was told
    bool isOver = false;

    void begin(int count, std::int64_t index = 0, bool areReady = true) {
        items = {};
        for (int id = 1; id <= count; ++id) {
            items.push_back(PBImageFileItem::imageFileItemWithId(id, 1, u"p"_s, 1, 0));
            if (areReady) ready.insert(id);
        }
        focus = items[static_cast<std::size_t>(index)];
        if (!show) make();
        show->setFileItemArray(items, index);
        show->play();
    }
    void make() {
        show = std::make_unique<PBSlideShowViewController>(
            PBSlideShowViewController::Parts{settings, *this, *this, *this, *this, *this});
        QObject::connect(
            show.get(), &PBSlideShowViewController::showController, show.get(),
            [this](bool isShown) { controls.push_back(isShown); });
        QObject::connect(
            show.get(), &PBSlideShowViewController::didExit, show.get(), [this] { isOver = true; });
    }
    bool press(int key, Qt::KeyboardModifiers modifiers = {}) {
        return show->doKeyDown(QKeyEvent(QEvent::KeyPress, key, modifiers));
    }
    /// What is shown since it was asked for last.
    QString shown() { return std::exchange(pictures, {}).join(u' '); }
    /// The same once so many pictures had their time, ...
    QString cycled(int times = 1, double interval = 2.0) {
        for (; times > 0; --times) {
            end();
            advance(interval);
        }
        return shown();
    }
    QString advanced(double seconds) {
        advance(seconds);
        return shown();
    }
    /// ... once that one is loaded, ...
    QString loaded(qint64 id) {
        ready.insert(id);
        listener(*items[static_cast<std::size_t>(id - 1)]);
        return shown();
    }
    /// ... and after the keys.
    QString pressed(std::initializer_list<int> keys) {
        for (const int key : keys)
            EXPECT_TRUE(press(key)) << key;
        return shown();
    }
};

TEST_F(SlideshowTest, eachPictureWaitsForTransitionAndIntervalAndTheListGoesRound) {
    begin(3, 1);
    EXPECT_TRUE(isAwake);
    EXPECT_EQ(advanced(10), u"2"); // the transition isn't over
    EXPECT_EQ(cycled(1, 1.9), u"");
    EXPECT_EQ(advanced(0.2), u"3");
    EXPECT_EQ(cycled(2), u"1 2");
    // An interval counts from when it begins, and one that ended early is nobody's.
    show->intervalMenuClicked(5);
    ended(false);
    EXPECT_FALSE(isRunning(Timer::Interval));
    EXPECT_EQ(cycled(1, 4.9), u"");
    EXPECT_EQ(advanced(0.2), u"3");

    begin(1);
    EXPECT_EQ(cycled(2, 5), u"1 1 1"); // of one photograph
}

TEST_F(SlideshowTest, aSlowPictureLengthensTheShowAndADamagedOneIsBlack) {
    begin(4, 0, false);
    EXPECT_EQ(loaded(2), u""); // not the one that is waited for
    EXPECT_EQ(loaded(1), u"1");
    EXPECT_EQ(loaded(1), u""); // another size of what is shown
    damaged.insert(3);
    EXPECT_EQ(cycled(2), u"2 none");
    EXPECT_EQ(cycled(), u"");
    EXPECT_EQ(advanced(60), u"");
    items[3]->setRotateAngle(90); // counter-clockwise
    EXPECT_EQ(loaded(4), u"4@-90");
    EXPECT_EQ(cycled(), u"1");
    // The line of loads was cleared, and nobody tells.
    ready.erase(2);
    EXPECT_EQ(cycled(), u"");
    ready.insert(2);
    EXPECT_EQ(advanced(1), u"2");
}

TEST_F(SlideshowTest, pausedItStaysAndGoesByHandAndResumesWithTheNext) {
    using enum Qt::Key;
    begin(3);
    EXPECT_EQ(pressed({Key_Right, Key_End}), u"1"); // while it plays, steps do nothing
    EXPECT_FALSE(show->canNext());
    end();
    press(Key_Space);
    EXPECT_FALSE(isAwake);
    EXPECT_EQ(cycled(1, 60), u"");
    EXPECT_EQ(
        pressed({Key_Left, Key_PageUp, Key_Right, Key_PageDown, Key_Right, Key_End, Key_Home}),
        u"3/0.5 2/0.5 3/0.5 1/0.5 2/0.5 3/0.5 1/0.5");
    EXPECT_EQ(cycled(1, 60), u"");
    press(Key_Space);
    EXPECT_TRUE(isAwake);
    EXPECT_EQ(cycled(), u"2 3");
    // A pause in the middle of a transition, and one that was asked for while a picture loads.
    press(Key_Space);
    EXPECT_EQ(cycled(1, 60), u"");
    ready.clear();
    press(Key_Left);
    EXPECT_EQ(loaded(2), u"2/0.5");
    EXPECT_EQ(cycled(1, 60), u"");
    EXPECT_FALSE(press(Key_Left, Qt::AltModifier) || press(Key_A));
}

TEST_F(SlideshowTest, withoutLoopItPausesAtTheLastAndStepsEndAtTheEnds) {
    make();
    show->setLoopPlay(false);
    begin(3, 1);
    EXPECT_EQ(preloads.first(), u"3 2");
    EXPECT_EQ(cycled(), u"2 3");
    EXPECT_EQ(preloads.size(), 2); // nothing lies ahead of the last
    EXPECT_EQ(cycled(1, 60), u"");
    EXPECT_TRUE(show->isPause() && !isAwake);
    EXPECT_TRUE(show->canPrev() && !show->canNext());
    EXPECT_EQ(pressed({Qt::Key_Right}), u"");
    press(Qt::Key_Home);
    EXPECT_TRUE(!show->canPrev() && show->canNext());
    EXPECT_EQ(pressed({Qt::Key_Left}), u"1/0.5");
    EXPECT_EQ(pressed({Qt::Key_End, Qt::Key_Space}), u"3/0.5 1"); // on from the last is the first
    // Loop is taken away while the last one waits for its interval.
    show->setLoopPlay(true);
    EXPECT_EQ(cycled(2), u"2 3");
    end();
    show->setLoopPlay(false);
    EXPECT_EQ(advanced(60), u"");
    EXPECT_TRUE(show->isPause());
}

TEST_F(SlideshowTest, whatComesNextIsLoadedAheadTheNearestLast) {
    begin(9, 7);
    EXPECT_EQ(preloads, QStringList({u"4 3 2 1 9 8"_s, u"5 4 3 2 1 9"_s}));
    show->playOrPause();
    preloads.clear();
    show->prevImage();
    EXPECT_EQ(preloads, QStringList({u"2 3 4 5 6 7"_s, u"1 2 3 4 5 6"_s}));
}

TEST_F(SlideshowTest, leavingGoesToThePhotographShownLastOnce) {
    begin(3);
    EXPECT_EQ(cycled(), u"1 2");
    show->exitSlideshow();
    show->exitSlideshow();
    show->play(); // as from a call that was on its way
    EXPECT_EQ(focus, items[1]);
    EXPECT_FALSE(isMode || isOver);
    advance(3);
    ASSERT_TRUE(support::spinUntil([this] { return isOver; }));
    EXPECT_TRUE(show->isStopped() && show->isPause());
    EXPECT_TRUE(running.empty() && !isAwake);
    EXPECT_TRUE(controls.back()); // the cursor, too
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(loaded(3), u"");

    for (const int key : {Qt::Key_Escape, Qt::Key_F5, Qt::Key_Q}) {
        isOver = false;
        isMode = true;
        begin(3);
        EXPECT_TRUE(show->doKeyDown(QKeyEvent(QEvent::KeyPress, key, {}, {}, true)));
        EXPECT_TRUE(isMode) << "held since before the show";
        EXPECT_TRUE(press(key));
        EXPECT_TRUE(support::spinUntil([this] { return isOver; }));
    }
    EXPECT_EQ(moves, 1); // it stood there already
}

TEST_F(SlideshowTest, controlsHideAfterThreeSecondsAwayFromThem) {
    begin(2);
    advance(2.9);
    show->mouseMoved(false);
    EXPECT_EQ(controls, std::vector({true}));
    const auto areShownAfter = [this](double seconds) {
        advance(seconds);
        return controls.back();
    };
    EXPECT_TRUE(areShownAfter(2.9));
    EXPECT_FALSE(areShownAfter(0.2));
    show->mouseMoved(true);
    EXPECT_TRUE(areShownAfter(60));
    show->mouseMoved(false);
    show->holdControls(true); // a menu
    EXPECT_TRUE(areShownAfter(60));
    show->transitionMenuClicked(TransitionStyle::Ripple);
    EXPECT_FALSE(areShownAfter(3.1));
}

TEST_F(SlideshowTest, shuffledItShowsEachOnceAndStaysWhereItIsWhenThatChanges) {
    make();
    show->setShuffled(true);
    begin(40, 17);
    QStringList way = cycled(40).split(u' ');
    EXPECT_EQ(way.first(), u"18"_s);
    EXPECT_EQ(way.takeLast(), u"18"_s); // round, by the same way
    EXPECT_EQ(QSet<QString>(way.begin(), way.end()).size(), 40);
    EXPECT_FALSE(std::ranges::is_sorted(way, {}, [](const QString& id) { return id.toInt(); }));
    const auto item = show->currentItem();
    show->setShuffled(false);
    EXPECT_EQ(show->currentItem(), item);
    EXPECT_EQ(cycled(), u"19");
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
        support::writeFile(file, "[General]\n" + QByteArray(stored).replace(' ', '\n'));
        platform::UserDefaults defaults(file);
        const SlideshowSettings read(defaults);
        QString told = u"%1 %2"_s.arg(read.interval()).arg(static_cast<int>(read.transition()));
        if (read.isLoopPlay()) told += u" loop"_s;
        if (read.isShuffled()) told += u" shuffle"_s;
        EXPECT_EQ(told, QString::fromLatin1(expected)) << stored;
    }
    settings.setDouble(2.5, u"SlideshowInterval"_s);
    begin(2);
    std::vector<double> intervals;
    for (const char key : {'=', '+', '-', '-', '-', '-'}) {
        press(key);
        intervals.push_back(settings.doubleForKey(u"SlideshowInterval"_s).value());
    }
    EXPECT_EQ(intervals, std::vector<double>({3, 4, 3, 2, 1, 1}));
    show->transitionMenuClicked(TransitionStyle::PageCurl);
    EXPECT_EQ(style, TransitionStyle::PageCurl);
    EXPECT_EQ(settings.integerForKey(u"SlideshowTransition"_s), 9);
}

} // namespace
