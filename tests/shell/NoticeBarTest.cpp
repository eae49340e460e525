#include "shell/panes/NoticeBar.h"

#include "support/Mouse.h"

TEST(NoticeBarTest, oneOfEachIsShownInTurnUntilItIsDismissedOrOver) {
    QWidget window;
    NoticeBar bar(&window);
    window.show();
    EXPECT_FALSE(bar.isVisible());
    QStringList performed;
    const auto tell = [&](const QString& key, const QString& text) {
        bar.tell({key, text, {}, u"Mend"_s, [&performed, text] { performed.append(text); }});
    };
    tell(u"a"_s, u"first"_s);
    tell(u"b"_s, u"second"_s);
    tell(u"c"_s, u"third"_s);
    tell(u"a"_s, u"first, again"_s);
    EXPECT_TRUE(bar.isVisible());
    support::pressButton(bar, u"Mend"_s);
    EXPECT_EQ(performed, QStringList{u"first, again"_s});
    support::pressButton(bar, u"Dismiss"_s);
    EXPECT_EQ(bar.text(), u"second");
    tell(u"a"_s, u"first, a third time"_s); // the user has seen it
    bar.withdraw(u"b"_s);
    EXPECT_EQ(bar.text(), u"third");
    bar.withdraw(u"c"_s);
    EXPECT_FALSE(bar.isVisible());
    // What was over and comes back is news.
    bar.withdraw(u"a"_s);
    tell(u"a"_s, u"first, back"_s);
    EXPECT_TRUE(bar.isVisible());
}
