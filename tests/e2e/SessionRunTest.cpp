#include "e2e/Program.h"

#include <QJsonArray>

namespace {

using e2e::State;

const QString groupPanel = u"PBGroupOutlineView"_s;
const QString sidebar = u"PBSourceOutlineView"_s;
const QString breadcrumb = u"PBPathControl"_s;

/// What the program is left with and must come back with.
const QStringList lasting{u"chain"_s,  u"sort"_s,       u"descending"_s,
                          u"filter"_s, u"subfolders"_s, u"folder"_s};

class SessionRunTest : public e2e::ProgramTest {
protected:
    auto waitForChain(const std::vector<int>& chain) {
        QJsonArray wanted;
        for (const int type : chain)
            wanted += type;
        return rests({{u"chain"_s, wanted}});
    }
    /// Opens the menu of a step of the breadcrumb and goes through its entries.
    void clickStep(qsizetype step, const QStringList& entries) {
        const auto steps = state().places(breadcrumb);
        ASSERT_LT(step, steps.size());
        desktop.click(steps[step].rect.center());
        chooseInMenu(entries);
    }
    /// Types the folder that the dialog asks for.
    void answerWith(const QString& folder) {
        ASSERT_TRUE(waitFor(&State::isChoosingFile));
        waitForFocus(u"QLineEdit"_s);
        typePath(folder);
        waitForFocus();
    }
    /// Clicks a row and waits until its list has the keys.
    void clickRow(const QString& text, const QString& list) {
        clickPlace(text, list);
        waitForFocus(list);
    }
    auto waitForRows(
        const QStringList& present, const QStringList& absent, const QString& list = groupPanel) {
        return waitFor([=](const State& s) {
            const auto isThere = [&](const QString& text) { return !s.place(text, list).isNull(); };
            return s.isAtRest() && std::ranges::all_of(present, isThere) &&
                   std::ranges::none_of(absent, isThere);
        });
    }
    auto waitForFolder(const QString& below, int count) {
        return rests({{u"folder"_s, QDir::cleanPath(photo(below))}, {u"browser.items"_s, count}});
    }
};

TEST_F(SessionRunTest, aFolderAddedInTheDialogIsGroupedByEveryMenuAndFollowed) {
    paintPhotographs();
    startAgain();
    EXPECT_EQ(state().value(u"tip"_s), 1);
    clickPlace(u"addFolder"_s);
    answerWith(photos());
    ASSERT_TRUE(waitForFolder({}, 92));
    EXPECT_TRUE(waitForRows({u"2025"_s, u"Dolomites"_s}, {}));
    EXPECT_EQ(state().value(u"tip"_s), 0);

    clickStep(0, {u"EXIF"_s, u"Camera Model"_s});
    EXPECT_TRUE(waitForChain({16, 5}));
    EXPECT_TRUE(waitForRows({u"NIKON Z 6"_s}, {}));
    clickStep(0, {u"Remove"_s});
    EXPECT_TRUE(waitForChain({5}));
    clickPlace(u"group"_s);
    chooseInMenu({u"Captured: Year > Folder"_s});
    EXPECT_TRUE(waitForChain({3, 5}));

    const QString folder = u"Dolomites"_s;
    clickRow(u"2024"_s, groupPanel);
    EXPECT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    desktop.key(u"Left"_s);
    EXPECT_TRUE(waitForRows({}, {folder}));
    QDir disk(photos());
    const QDir coast(photo(u"2025/West coast"_s));
    ASSERT_TRUE(QFile::copy(coast.filePath(coast[2]), disk.filePath(u"added.jpg"_s)));
    EXPECT_TRUE(shows(93));
    EXPECT_TRUE(waitForRows({u"2024"_s}, {folder}));
    ASSERT_TRUE(disk.rename(u"2021"_s, u"2020"_s) && QDir(photo(u"2022"_s)).removeRecursively());
    EXPECT_TRUE(shows(75));
    EXPECT_TRUE(waitForRows({u"2021 › Lake in autumn"_s}, {u"2022"_s})); // years, not folders

    // Copied to a new disk: the user says where it is now, and it is known again.
    const QString copy = photos() + u" copied"_s;
    const QString shell = u"cp -r '%1' '%2' && rm -r '%1'"_s.arg(photos(), copy);
    ASSERT_EQ(std::system(QFile::encodeName(shell).constData()), 0);
    EXPECT_TRUE(rests({{u"folder"_s, QString()}}));
    desktop.menu(state().place(u"photos"_s, sidebar).center());
    chooseInMenu({u"Locate Folder…"_s});
    answerWith(copy);
    EXPECT_TRUE(shows(75));
    EXPECT_EQ(state().value(u"folder"_s), copy);
    EXPECT_TRUE(waitForRows({u"photos copied"_s}, {u"photos"_s}, sidebar));
}

/// Controls that lie partly over another, or beyond the window.
QStringList misplaced(const State& state) {
    QList<QPair<QString, QRect>> all;
    for (const QJsonValue& value : state.json()[u"controls"_s].toArray()) {
        const QString name = value[u"class"_s].toString() + u' ' + value[u"name"_s].toString() +
                             value[u"text"_s].toString();
        // What takes hold of a divider lies over both panes.
        if (!name.contains(u"Handle")) all.append({name, e2e::rectOf(value[u"rect"_s])});
    }
    QStringList bad;
    for (const auto& [name, rect] : all) {
        if (!state.window().contains(rect)) bad += name + u" is cut"_s;
        for (const auto& [other, otherRect] : all) {
            if (rect.intersects(otherRect) && !rect.contains(otherRect) &&
                !otherRect.contains(rect))
                bad += name + u" over "_s + other;
        }
    }
    return bad;
}

TEST_F(SessionRunTest, theWindowComesBackAsItWasLeftAndGoesOnFromThere) {
    startWithPhotographs();
    const auto isHidden = [&](const QString& split) {
        return waitFor([=](const State& s) {
            return s.isAtRest() && s.panes(split).size() == 2 && s.panes(split)[1].isEmpty();
        });
    };
    const auto expectTidy = [&] {
        EXPECT_TRUE(waitFor([](const State& s) { return misplaced(s).isEmpty(); }))
            << misplaced(state()).join(u'\n').toStdString();
    };
    const QString left = u"GroupSplitPos"_s;

    desktop.key(u"ctrl+minus"_s); // thumbnails of 144 from 160
    // The divider beside the sidebar.
    const QRect folders = state().panes(left).value(0);
    const QPoint divider(folders.right() + 1, folders.center().y());
    desktop.drag(divider, divider + QPoint(70, 0));
    EXPECT_TRUE(waitFor(
        [&](const State& s) { return s.panes(left).value(0).width() == folders.width() + 70; }));
    desktop.release();
    // What is hidden gives the keys to the browser, if it had them.
    clickRow(u"2024"_s, groupPanel);
    clickPlace(u"Hide Information"_s);
    EXPECT_TRUE(isHidden(u"InfoSplitPos"_s));
    EXPECT_EQ(state().value(u"focus"_s), groupPanel);
    clickPlace(u"Hide Groups"_s);
    EXPECT_TRUE(isHidden(left));
    EXPECT_EQ(state().value(u"focus"_s), u"PBImageBrowserView"_s);
    clickPlace(u"Show Groups"_s);

    const QString window = state().mainWindow()[u"id"_s].toVariant().toString();
    for (const QSize size : {QSize(720, 480), QSize(900, 640)}) {
        desktop.resize(window, size);
        EXPECT_TRUE(waitForWindow(size));
        expectTidy();
        EXPECT_GT(e2e::rectOf(state().browser(u"rect"_s)).width(), 280);
    }

    choose({u"View"_s, u"Arrange By"_s, u"Date Taken"_s});
    clickStep(2, {u"EXIF"_s, u"Aperture"_s});
    EXPECT_TRUE(waitForChain({3, 5, 21}));
    clickRow(u"photos"_s, sidebar);
    desktop.key(u"Right"_s);
    clickRow(u"2023"_s, sidebar);
    EXPECT_TRUE(waitForFolder(u"2023"_s, 24));
    const State before = state();
    // The next start begins with the window of before it filled the screen.
    desktop.key(u"F11"_s);
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    expectTidy();
    quit();

    startAgain();
    ASSERT_TRUE(waitForFolder(u"2023"_s, 24));
    const State after = state();
    for (const QString& name : lasting)
        EXPECT_EQ(after.value(name), before.value(name)) << name.toStdString();
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.window() == before.window() && s.has({{u"splits"_s, before.value(u"splits"_s)}});
    }));
    EXPECT_EQ(state().browser(u"thumbnailSize"_s), 144);

    clickRow(u"2022"_s, sidebar);
    EXPECT_TRUE(waitForFolder(u"2022"_s, 18));
    clickPlace(u"subFolder"_s);
    EXPECT_TRUE(shows(0));
    desktop.key(u"ctrl+shift+s"_s);
    EXPECT_TRUE(shows(18));
    desktop.key(u"Right"_s);
    clickRow(u"Lisbon"_s, sidebar);
    EXPECT_TRUE(waitForFolder(u"2022/Lisbon"_s, 10));
    clickPlace(u"Back"_s);
    EXPECT_TRUE(waitForFolder(u"2022"_s, 18));
}

} // namespace
