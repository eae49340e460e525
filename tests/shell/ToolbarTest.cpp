#include "shell/panes/WorkProgress.h"
#include "shell/toolbar/MainToolbar.h"

#include "support/Support.h"

#include <QMainWindow>
#include <QSignalSpy>

namespace {

struct MainToolbarTest : testing::Test {
    MainToolbarTest() {
        window.addToolBar(toolbar);
        window.resize(1100, 300);
        window.show();
    }
    int leftOf(QStringView identifier) const {
        return toolbar->itemView(identifier)->mapTo(&window, QPoint()).x();
    }
    void layOut() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    int groupBeside(int sidebarWidth) {
        toolbar->alignWithSidebar(sidebarWidth);
        layOut();
        return leftOf(u"group");
    }
    QMainWindow window;
    MainToolbar* toolbar = new MainToolbar(&window);
};

TEST_F(MainToolbarTest, whatFollowsTheFirstItemKeepsToTheSidebarAsLongAsThereIsRoom) {
    const int at300 = groupBeside(300);
    EXPECT_NEAR(at300, 300, 12);
    EXPECT_EQ(at300 - groupBeside(0), 100) << "a hidden sidebar counts as one of 200";
    EXPECT_EQ(groupBeside(380) - at300, 80);

    for (const bool captions : {false, true}) {
        toolbar->setCaptions(captions);
        for (const int width : {1600, 900, 720, 640}) {
            window.resize(width, 300);
            layOut();
            int end = 0;
            for (const auto& item : toolbar->mainToolbarItems()) {
                EXPECT_GE(leftOf(item.identifier), end) << item.identifier.toStdString();
                end = leftOf(item.identifier) + item.view->width();
            }
            EXPECT_LE(end, width) << "captions " << captions;
            EXPECT_GE(toolbar->searchField().width(), 100);
        }
    }
}

TEST(WorkProgressTest, shortWorkIsQuietAndLongWorkIsCountedFromItsBegin) {
    WorkFigures figures{.thumbnailsFinished = 500};
    WorkProgress progress([&] { return figures; });
    const auto look = [&](int times) {
        for (int i = 0; i < times; ++i)
            progress.update();
        return progress.state();
    };
    const auto* timer = progress.findChild<QTimer*>();
    using Kind = WorkProgress::Kind;
    using State = WorkProgress::State;
    QSignalSpy changes(&progress, &WorkProgress::changed);
    progress.restart();
    EXPECT_EQ(timer->isActive() ? timer->interval() : 0, 150);
    figures.isScanning = true;
    figures.scanned = 70;
    EXPECT_EQ(look(4), State()) << "what ends within half a second is not worth a word";
    EXPECT_EQ(look(1), (State{Kind::Scanning, 70, 0}));
    figures.thumbnailsFinished = 530;
    figures.thumbnailsPending = 90;
    EXPECT_EQ(look(1), (State{Kind::Thumbnails, 30, 120}));
    progress.restart();
    EXPECT_EQ(look(4), State()) << "another folder";
    EXPECT_EQ(look(1), (State{Kind::Thumbnails, 0, 90}));
    figures = {.thumbnailsFinished = 620};
    EXPECT_EQ(look(1), State());
    EXPECT_FALSE(timer->isActive()) << "nothing is left to look after";
    figures.thumbnailsPending = 4;
    EXPECT_EQ(look(5), (State{Kind::Thumbnails, 0, 4})) << "work of its own";
    look(1);
    EXPECT_EQ(changes.size(), 6) << "told only when it is another";
}

} // namespace
