#include "group/PBImageFileItem.h"
#include "shell/MainToolbar.h"
#include "shell/ToolbarValidation.h"
#include "shell/WorkProgress.h"

#include "support/Support.h"

#include <QMainWindow>

namespace {

TEST(ToolbarValidationTest, aCommandTakesAsMuchOfTheSelectionAsItNeeds) {
    using Command = ToolbarValidation::Command;
    const auto item = PBImageFileItem::imageFileItemWithId(1, 1, u"a.jpg"_s, 1, 1);
    std::shared_ptr<PBImageFileItem> selected;
    int asked = 0;
    bool isServed = true;
    ToolbarValidation validation(
        {.canBack = [] { return true; },
         .canForward = [] { return false; },
         .firstSelected = [&] { return ++asked, selected; },
         .allSelected = [] { return PBImageFileList(); },
         .isServed = [&](Command) { return isServed; }});
    EXPECT_TRUE(validation.isEnabled(Command::back));
    EXPECT_FALSE(validation.isEnabled(Command::forward));
    EXPECT_EQ(asked, 0) << "the history has nothing to do with the selection";
    for (const Command command : {Command::rotate, Command::shareClicked, Command::deleteClicked}) {
        selected = nullptr;
        EXPECT_FALSE(validation.isEnabled(command));
        selected = item;
        EXPECT_TRUE(validation.isEnabled(command));
        isServed = false;
        EXPECT_FALSE(validation.isEnabled(command));
        isServed = true;
    }
    validation.beginValidateToolbarItem(ToolbarValidation::SelectionStatus::First);
    EXPECT_TRUE(validation.validateToolbarItem(Command::rotate));
    validation.endValidateToolbarItem();
    EXPECT_FALSE(validation.validateToolbarItem(Command::rotate)) << "the selection is let go";
}

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
    QMainWindow window;
    MainToolbar* toolbar = new MainToolbar(&window);
};

TEST_F(MainToolbarTest, whatFollowsTheFirstItemKeepsToTheSidebarAsLongAsThereIsRoom) {
    toolbar->alignWithSidebar(300);
    layOut();
    const int at300 = leftOf(u"group");
    EXPECT_NEAR(at300, 300, 12);
    toolbar->alignWithSidebar(380);
    layOut();
    EXPECT_EQ(leftOf(u"group") - at300, 80);
    toolbar->alignWithSidebar(0);
    layOut();
    EXPECT_EQ(at300 - leftOf(u"group"), 100) << "a hidden sidebar counts as one of 200";

    toolbar->alignWithSidebar(400);
    for (const bool captions : {false, true}) {
        toolbar->setCaptions(captions);
        for (const int width : {1600, 900, 720, 560}) {
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
    using Kind = WorkProgress::Kind;
    using State = WorkProgress::State;
    progress.restart();
    figures.isScanning = true;
    EXPECT_EQ(look(1), State()) << "what ends at once is not worth a word";
    figures.scanned = 70;
    EXPECT_EQ(look(10), (State{Kind::Scanning, 70, 0}));
    figures.thumbnailsFinished = 530;
    figures.thumbnailsPending = 90;
    EXPECT_EQ(look(1), (State{Kind::Thumbnails, 30, 120}));
    progress.restart();
    EXPECT_EQ(look(1), State()) << "another folder";
    EXPECT_EQ(look(10), (State{Kind::Thumbnails, 0, 90}));
    figures = {.thumbnailsFinished = 620};
    EXPECT_EQ(look(1), State());
    figures.thumbnailsPending = 4;
    EXPECT_EQ(look(10), (State{Kind::Thumbnails, 0, 4})) << "work of its own";
}

} // namespace
