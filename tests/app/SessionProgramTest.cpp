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
    bool isQuiet() { return controller->isIdle() && !controller->isScanning(); }
    /// The names of the selected photographs, and of the current one.
    QString shown() {
        QString names;
        for (const auto& item : selection().selectedFileArray(FoldedLeaves::Included))
            names += item->fileName() + u' ';
        const auto current = browser().leaves().imageFileAtIndex(browser().currentIndex());
        return names + (current ? current->fileName() : u"-"_s);
    }
};

TEST_F(SessionProgramTest, photographsAreKnownByTheirIdsAndInAnotherCatalogueByTheirPaths) {
    const QString pictures = make(u"pictures"_s);
    for (const QString& name : support::words("a b c d e f"))
        makePicture(u"pictures/"_s + name + u".png"_s);
    controller->addFolders({pictures});
    ASSERT_TRUE(support::spinUntil(
        [&] { return isQuiet() && selection().itemCount(FoldedLeaves::Included) == 6; }));
    choose(support::words("b.png e.png"));
    start();
    EXPECT_TRUE(support::spinUntil([&] { return shown() == u"b.png e.png e.png"; }))
        << shown().toStdString();
    ASSERT_TRUE(support::spinUntil([&] { return isQuiet(); }));

    // What is only opened is for its own run, be it asked for at the start or later.
    const QString other = makePicture(u"other/x.png"_s);
    for (const bool isAtStart : {false, true}) {
        if (isAtStart) {
            start(other);
        } else {
            choose({u"c.png"_s}); // at the last moment
            controller->applicationOpenFiles({other});
        }
        ASSERT_TRUE(support::spinUntil([&] { return isQuiet() && shown() == u"x.png x.png"; }))
            << shown().toStdString();
        EXPECT_EQ(window().openedOnShow(), QStringList{other}) << "for a restart of this run";
        start();
        EXPECT_EQ(window().openedOnShow(), QStringList());
        EXPECT_TRUE(support::spinUntil([&] { return shown() == u"c.png c.png"; }))
            << shown().toStdString();
        ASSERT_TRUE(support::spinUntil([&] { return isQuiet(); }));
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
    EXPECT_TRUE(support::spinUntil([&] { return shown() == u"e.png e.png"; }))
        << shown().toStdString();
    ASSERT_TRUE(support::spinUntil([&] { return isQuiet(); }));
    EXPECT_EQ(shown(), u"e.png e.png"_s);
}

} // namespace
