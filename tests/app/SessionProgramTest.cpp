#include "app/RunningProgram.h"

namespace {

struct SessionProgramTest : RunningProgramTest {
    /// Selects them; the last one is the current one.
    void choose(const QStringList& names) {
        browser().leaves().forEachImage(
            FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
                item->setIsSelected(names.contains(item->fileName()));
                if (item->fileName() == names.constLast()) browser().setCurrentImageFile(item);
            });
        browser().selectDidChange();
    }
    /// Those are selected and current, now and when all work is done.
    testing::AssertionResult comesBackTo(const QString& wanted) {
        const auto isThere = [&] { return selectedAndCurrent() == wanted; };
        if (support::spinUntil(isThere) && becomesIdle() && isThere())
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << selectedAndCurrent().toStdString();
    }
};

TEST_F(SessionProgramTest, photographsAreKnownByTheirIdsAndInAnotherCatalogueByTheirPaths) {
    const QString pictures = make(u"pictures"_s);
    for (const QString& name : support::words("a b c d e f"))
        makePicture(u"pictures/"_s + name + u".png"_s);
    controller->addFolders({pictures});
    ASSERT_TRUE(shows(6) && becomesIdle());
    choose(support::words("b.png e.png"));
    start();
    EXPECT_TRUE(comesBackTo(u"b.png e.png e.png"_s));

    // What is only opened is for its own run, be it asked for at the start or later.
    const QString other = makePicture(u"other/x.png"_s);
    for (const bool isAtStart : {false, true}) {
        if (isAtStart) {
            start(other);
        } else {
            choose({u"c.png"_s}); // at the last moment
            controller->applicationOpenFiles({other});
        }
        ASSERT_TRUE(comesBackTo(u"x.png x.png"_s));
        EXPECT_EQ(window().openedOnShow(), QStringList{other}) << "for a restart of this run";
        start();
        EXPECT_EQ(window().openedOnShow(), QStringList());
        EXPECT_TRUE(comesBackTo(u"c.png c.png"_s));
    }
    choose(support::words("b.png e.png"));

    // Another one gives the same numbers to others.
    controller.reset();
    for (const QString& name : QDir(path(u"profile"_s)).entryList({u"*.db*"_s}, QDir::Files))
        QFile::remove(path(u"profile/"_s + name));
    QFile::remove(pictures + u"/b.png"_s);
    for (const QString& name : support::words("g h i j k l"))
        makePicture(u"pictures/"_s + name + u".png"_s);
    start();
    controller->addFolders({pictures});
    EXPECT_TRUE(comesBackTo(u"e.png e.png"_s));
}

/// More than the first tree has: the others come while it rests on the screen.
TEST_F(SessionProgramTest, whatTheLastTreeBringsIsKnownAgain) {
    for (int number = 100; number < 250; ++number)
        makePicture(u"pictures/%1.png"_s.arg(number));
    controller->addFolders({path(u"pictures"_s)});
    ASSERT_TRUE(shows(150) && becomesIdle());
    choose(support::words("100.png 249.png"));
    groupBy({group::FileSizeBucket});
    EXPECT_TRUE(comesBackTo(u"100.png 249.png 249.png"_s));
    start();
    EXPECT_TRUE(comesBackTo(u"100.png 249.png 249.png"_s));
}

} // namespace
