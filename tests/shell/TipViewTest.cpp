#include "browser/PBImageBrowserTipView.h"

#include "support/Support.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

TEST(TipViewTest, kindFollowsTheStateOfTheWindow) {
    const auto kind = &PBImageBrowserTipView::kindFor;
    for (const bool scanning : {false, true}) {
        EXPECT_EQ(kind(true, true, true, scanning), 0);
        EXPECT_EQ(kind(true, false, false, scanning), 0);
        EXPECT_EQ(kind(false, false, false, scanning), 1);
        EXPECT_EQ(kind(false, true, false, scanning), 2);
        EXPECT_EQ(kind(false, true, true, scanning), scanning ? 4 : 3);
    }
}

TEST(TipViewTest, eachKindShowsItsPartsAndOnlyTheFirstTheButton) {
    QWidget parent;
    auto* tip = new PBImageBrowserTipView(&parent);
    auto* button = tip->findChild<QPushButton*>(QStringLiteral("addFolder"));
    auto* indicator = tip->findChild<QProgressBar*>();
    parent.show();
    for (const std::int64_t kind : {1, 2, 3, 4, 0}) {
        SCOPED_TRACE(kind);
        tip->setTipKind(kind);
        EXPECT_EQ(tip->isVisible(), kind != 0);
        EXPECT_EQ(button->isVisible(), kind == 1);
        EXPECT_TRUE(support::spinUntil([&] { return indicator->isVisible() == (kind == 4); }));
    }
    int requests = 0;
    QObject::connect(tip, &PBImageBrowserTipView::addFolderRequested, tip, [&] { ++requests; });
    tip->setTipKind(1);
    button->click();
    EXPECT_EQ(requests, 1);
}

} // namespace
