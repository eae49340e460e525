#include "e2e/Program.h"

#include <QJsonArray>

using e2e::State;

namespace {

class MarksRunTest : public e2e::ProgramTest {
protected:
    /// Stars and flag of an image on show, as "4+" for a flagged one; empty for one that is not.
    static QString marksOf(const State& state, const QString& name) {
        for (const QJsonValue& group : state.browser(u"groups"_s).toArray())
            for (const QJsonValue& item : group[u"items"_s].toArray())
                if (item[u"name"_s].toString() == name)
                    return QString::number(item[u"stars"_s].toInt()) +
                           (item[u"flagged"_s].toBool() ? u"+"_s : QString());
        return {};
    }
    auto waitForMarks(const QString& name, const QString& marks) {
        return waitFor([=](const State& s) { return marksOf(s, name) == marks; });
    }
};

TEST_F(MarksRunTest, marksFromKeysMenuAndToolbarFollowFilterUndoAndTheNextStart) {
    paintPhotographs();
    start();
    const QList<e2e::Item> items = state().items();
    ASSERT_GE(items.size(), 3);
    const QString first = items[0].name;
    const QString second = items[1].name;
    click(first);
    desktop.key(u"4"_s);
    EXPECT_TRUE(waitForMarks(first, u"4"_s));
    desktop.key(u"ctrl+3"_s);
    EXPECT_TRUE(waitForMarks(first, u"3"_s));
    choose({u"Image"_s, u"Rating"_s, u"2 Stars"_s});
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    desktop.key(u"space"_s);
    EXPECT_TRUE(waitForMarks(first, u"2+"_s));
    clickPlace(u"flag"_s);
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    click(second);
    clickPlace(u"flag"_s);
    EXPECT_TRUE(waitForMarks(second, u"0+"_s));
    clickPlace(u"rating"_s);
    chooseInMenu({u"5 Stars"_s});
    EXPECT_TRUE(waitForMarks(second, u"5+"_s));

    // What loses its stars leaves a display of rated ones with the key, and comes back.
    choose({u"View"_s, u"Filter"_s, u"Rated Only"_s});
    EXPECT_TRUE(shows(2));
    click(first);
    desktop.key(u"0"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(shows(2));
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    desktop.key(u"ctrl+shift+z"_s);
    EXPECT_TRUE(shows(1));
    choose({u"View"_s, u"Filter"_s, u"Rated Only"_s});
    EXPECT_TRUE(shows(92));
    choose({u"Edit"_s, u"Undo Rating of 1 Photograph"_s});
    EXPECT_TRUE(waitForMarks(first, u"2"_s)) << "over another tree";

    quit();
    startAgain();
    EXPECT_TRUE(waitFor([&](const State& s) { return s.isAtRest(); }));
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    EXPECT_TRUE(waitForMarks(second, u"5+"_s));
}

} // namespace
