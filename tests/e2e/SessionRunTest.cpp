#include "FMDB/FMDatabase.h"
#include "e2e/Program.h"
#include "platform/files/PathNames.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>

namespace {

using e2e::Item;
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
        return waitFor(
            [=](const State& s) { return s.isAtRest() && s.json()[u"chain"_s] == wanted; });
    }
    /// Opens the menu of a step of the breadcrumb and goes through its entries.
    void clickStep(qsizetype step, const QStringList& entries) {
        const auto steps = state().places(breadcrumb);
        ASSERT_LT(step, steps.size());
        desktop.click(steps[step].rect.center());
        chooseInMenu(entries);
    }
    /// Clicks a row and waits until its list has the keys.
    void clickRow(const QString& text, const QString& list) {
        clickPlace(text, list);
        EXPECT_TRUE(waitFor([=](const State& s) { return s.json()[u"focus"_s] == list; }));
    }
    auto waitForRows(const QString& list, const QStringList& present, const QStringList& absent) {
        return waitFor([=](const State& s) {
            const QStringList rows = s.texts(list);
            const auto isThere = [&](const QString& text) { return rows.contains(text); };
            return s.isAtRest() && std::ranges::all_of(present, isThere) &&
                   std::ranges::none_of(absent, isThere);
        });
    }
    auto waitForFolder(const QString& below, int count) {
        const QString path = QDir::cleanPath(photo(below));
        return waitFor([=](const State& s) {
            return s.isAtRest() && s.json()[u"folder"_s] == path && s.browser(u"items"_s) == count;
        });
    }
};

TEST_F(SessionRunTest, aFolderAddedInTheDialogIsGroupedByEveryMenu) {
    paintPhotographs();
    startAgain();
    EXPECT_EQ(state().json()[u"tip"_s], 1);
    clickPlace(u"addFolder"_s);
    const auto isAsking = [](const State& s) { return s.control(u"fileNameEdit"_s).has_value(); };
    ASSERT_TRUE(waitFor(isAsking));
    takeFocus(u"QLineEdit"_s);
    desktop.type(photos());
    // The first Return may go to the list of completions, which comes when it likes.
    EXPECT_TRUE(waitFor(std::not_fn(isAsking), [&] {
        if (isAsking(state())) desktop.key(u"Return"_s);
    }));
    takeFocus();
    ASSERT_TRUE(waitForFolder({}, 92));
    EXPECT_TRUE(waitForRows(groupPanel, {u"2025"_s, u"Dolomites"_s}, {}));
    EXPECT_EQ(state().json()[u"tip"_s], 0);

    clickStep(0, {u"EXIF"_s});
    // Ten general ones, EXIF, IPTC, a swap, Remove; and what EXIF has besides the year.
    EXPECT_TRUE(waitFor([](const State& s) { return s.places(u"QMenu"_s).size() == 14 + 18; }));
    chooseInMenu({u"Camera Model"_s});
    EXPECT_TRUE(waitForChain({16, 5}));
    EXPECT_TRUE(waitForRows(groupPanel, {u"NIKON Z 6"_s}, {}));
    const std::tuple<qsizetype, QStringList, std::vector<int>> steps[] = {
        {2, {u"IPTC"_s, u"Keywords"_s}, {16, 5, 39}},
        {1, {u"File Kind"_s}, {16, 6, 39}},
        {0, {u"Camera Model <--> Keywords"_s}, {39, 6, 16}},
        {1, {u"Remove"_s}, {39, 16}},
        {0, {u"Remove"_s}, {16}},
        {0, {u"Remove"_s}, {}},
        {0, {u"Star Rating"_s}, {12}}};
    for (const auto& [step, entries, chain] : steps) {
        clickStep(step, entries);
        EXPECT_TRUE(waitForChain(chain)) << entries.last().toStdString();
    }

    const QString group = u"Group"_s;
    const QString preset = u"Star Rating"_s;
    choose({group, u"Save as Preset"_s});
    choose({group, u"Presets"_s, u"Captured: Year > Folder"_s});
    EXPECT_TRUE(waitForChain({3, 5}));
    clickPlace(u"group"_s);
    chooseInMenu({u"Presets"_s, preset});
    EXPECT_TRUE(waitForChain({12}));
    choose({group, u"Remove Preset"_s, preset});
    choose({group, u"Presets"_s, u"Captured: Year > Folder"_s});
    EXPECT_TRUE(waitForChain({3, 5}));

    const QString folder = u"Dolomites"_s;
    clickRow(u"2024"_s, groupPanel);
    EXPECT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    desktop.key(u"Left"_s);
    EXPECT_TRUE(waitForRows(groupPanel, {}, {folder}));
    makePictures(u"2025/Added"_s, {u"added.png"_s});
    EXPECT_TRUE(waitForRows(groupPanel, {u"2024"_s}, {folder}));
    EXPECT_TRUE(shows(93));
    EXPECT_TRUE(waitForRows(groupPanel, {u"2024"_s}, {folder}));
    quit();
}

TEST_F(SessionRunTest, filterSearchOrderAndFolderDecideWhatIsShown) {
    paintPhotographs();
    start();
    ASSERT_TRUE(shows(92));
    quit();
    {
        FMDatabase catalogue(platform::pathInFolder(profile(), u"files.db"));
        ASSERT_TRUE(catalogue.open());
        ASSERT_TRUE(catalogue.executeUpdate(
            u"UPDATE ImageFile SET FileFlag = FileName LIKE 'DSCF%' OR FileName LIKE 'P%', "
            "FileStars = 3 * (FileName LIKE 'P%')"_s));
    }
    start();
    ASSERT_TRUE(waitForFolder({}, 92));
    choose({u"View"_s, u"Filter"_s, u"Flagged Only"_s});
    EXPECT_TRUE(shows(41));
    EXPECT_EQ(state().json()[u"filter"_s], 1);
    clickPlace(u"Show only photographs with stars"_s);
    EXPECT_TRUE(shows(10));
    EXPECT_EQ(state().json()[u"filter"_s], 3);
    clickPlace(u"Show only photographs with stars"_s);
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"dscf"_s);
    EXPECT_TRUE(shows(31));
    clickPlace(u"Show only flagged photographs"_s);
    EXPECT_TRUE(shows(31));

    // In one group the whole order shows: by name, date and size it is that of the disk.
    for (int step = 0; step < 2; ++step)
        clickStep(0, {u"Remove"_s});
    ASSERT_TRUE(waitForChain({}));
    using Key = std::function<qint64(const QFileInfo&)>;
    const Key date = [](const QFileInfo& file) { return file.lastModified().toSecsSinceEpoch(); };
    const Key name = [](const QFileInfo& file) { return file.baseName().mid(4).toInt(); };
    const Key none = [](const QFileInfo&) { return 0; };
    QHash<QString, QFileInfo> files;
    for (const QString& file : filesOnDisk())
        files.insert(QFileInfo(file).fileName(), QFileInfo(photo(file)));
    const std::tuple<QString, int, bool, Key> orders[] = {
        {u"Name"_s, 1, false, name},
        {u"Date Taken"_s, 4, true, date},
        {u"Date Modified"_s, 3, true, date},
        {u"File Size"_s, 2, false, std::mem_fn(&QFileInfo::size)},
        {u"Image Size"_s, 6, false, none},
        {u"File Kind"_s, 5, false, none}};
    for (const auto& [entry, type, isDescending, key] : orders) {
        for (const bool isOpposite : {false, true}) {
            const bool isDown = isDescending != isOpposite;
            choose(
                {u"View"_s, u"Arrange By"_s,
                 isOpposite ? QString::fromLatin1(isDown ? "Descending" : "Ascending") : entry});
            EXPECT_TRUE(waitFor([&, wanted = type, keyOf = std::cref(key)](const State& s) {
                std::vector<qint64> keys;
                for (const Item& item : s.items())
                    keys.push_back(isDown ? -keyOf(files[item.name]) : keyOf(files[item.name]));
                return s.isAtRest() && s.json()[u"sort"_s] == wanted &&
                       s.json()[u"descending"_s] == isDown && keys.size() > 9 &&
                       std::ranges::is_sorted(keys);
            })) << entry.toStdString();
        }
    }
    desktop.key(u"ctrl+f"_s);
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(shows(92));

    clickRow(u"photos"_s, sidebar);
    desktop.key(u"Right"_s);
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
    desktop.key(u"alt+Right"_s);
    EXPECT_TRUE(waitForFolder(u"2022/Lisbon"_s, 10));
    quit();
}

/// Controls that lie partly over another, or beyond the window.
QStringList misplaced(const State& state) {
    QList<QPair<QString, QRect>> all;
    for (const QJsonValue& value : state.json()[u"controls"_s].toArray()) {
        const QString name = value[u"class"_s].toString() + u' ' + value[u"name"_s].toString() +
                             value[u"text"_s].toString();
        // What takes hold of a divider lies over both panes.
        if (!name.contains(u"Handle")) all.append({name, e2e::rectOf(value.toObject())});
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

TEST_F(SessionRunTest, theWindowComesBackAsItWasLeft) {
    ASSERT_TRUE(desktop.startWindowManager()) << "openbox is not installed";
    paintPhotographs();
    start();
    const auto waitForPane = [&](const QString& split, int pane, bool isShown) {
        return waitFor([=](const State& s) {
            const QList<QRect> panes = s.panes(split);
            return s.isAtRest() && panes.size() == 2 && panes[pane].isEmpty() != isShown;
        });
    };
    const auto waitForWindow = [&](QSize size) {
        return waitFor([=](const State& s) { return s.isAtRest() && s.window().size() == size; });
    };
    const auto waitForThumbnails = [&](int size) {
        return waitFor(
            [=](const State& s) { return s.isAtRest() && s.browser(u"thumbnailSize"_s) == size; });
    };
    const QString base = u"SourceGroupSplitPos"_s;
    const QString left = u"GroupSplitPos"_s;
    const QString right = u"InfoSplitPos"_s;

    const QRect slider = state().place(u"thumbnailSize"_s);
    desktop.drag(slider.center(), {slider.right() + 20, slider.center().y()});
    desktop.release();
    EXPECT_TRUE(waitForThumbnails(256));
    desktop.key(u"ctrl+minus"_s);
    EXPECT_TRUE(waitForThumbnails(240));

    // The divider beside the sidebar, then the one between its panes.
    const QRect folders = state().panes(left).value(0);
    const QPoint corner = folders.bottomRight() + QPoint(1, 1);
    const QSize goal = folders.size() + QSize(70, -60);
    const auto folderPane = [&](const State& s) { return s.panes(left).value(0).size(); };
    desktop.drag({corner.x(), folders.center().y()}, {corner.x() + 70, folders.center().y()});
    EXPECT_TRUE(waitFor([&](const State& s) { return folderPane(s).width() == goal.width(); }));
    desktop.release();
    desktop.drag({folders.center().x(), corner.y()}, {folders.center().x(), corner.y() - 60});
    EXPECT_TRUE(waitFor([&](const State& s) { return folderPane(s) == goal; }));
    desktop.release();
    const QList<QRect> arranged = state().panes(left);

    const std::tuple<QString, QString, int> panes[] = {
        {u"F9"_s, base, 0},
        {u"ctrl+alt+1"_s, left, 0},
        {u"ctrl+alt+2"_s, left, 1},
        {u"ctrl+i"_s, right, 1}};
    for (const auto& [key, split, pane] : panes) {
        desktop.key(key);
        EXPECT_TRUE(waitForPane(split, pane, false)) << key.toStdString();
        desktop.key(key);
        EXPECT_TRUE(waitForPane(split, pane, true)) << key.toStdString();
        EXPECT_EQ(state().panes(left), arranged);
    }
    // What is hidden gives the keys to the browser.
    clickRow(u"2024"_s, groupPanel);
    clickPlace(u"Hide Groups"_s);
    EXPECT_TRUE(waitForPane(left, 1, false));
    EXPECT_EQ(state().json()[u"focus"_s], u"PBImageBrowserView"_s);
    clickPlace(u"Show Groups"_s);
    clickPlace(u"Hide Information"_s);
    EXPECT_TRUE(waitForPane(right, 1, false));

    const qint64 window = state().topWindow();
    for (const QSize size : {QSize(720, 480), QSize(900, 640)}) {
        desktop.resize(window, size);
        EXPECT_TRUE(waitForWindow(size));
        EXPECT_TRUE(waitFor([](const State& s) { return misplaced(s).isEmpty(); }))
            << misplaced(state()).join(u'\n').toStdString();
        EXPECT_GT(state().browserRect().width(), 280);
    }
    const QRect normal = state().window();
    desktop.key(u"F11"_s);
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    EXPECT_FALSE(state().control(u"QMenuBar"_s));
    EXPECT_TRUE(waitFor([](const State& s) { return misplaced(s).isEmpty(); }))
        << misplaced(state()).join(u'\n').toStdString();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([&](const State& s) { return s.window() == normal; }));

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
    quit();

    startAgain();
    ASSERT_TRUE(waitForFolder(u"2023"_s, 24));
    const State after = state();
    for (const QString& name : lasting)
        EXPECT_EQ(after.json()[name], before.json()[name]) << name.toStdString();
    const QString splits = u"splits"_s;
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.window() == before.window() && s.json()[splits] == before.json()[splits];
    }));
    EXPECT_TRUE(waitForThumbnails(240));
    quit();
}

TEST_F(SessionRunTest, photographsThatComeAndGoOnDiskComeAndGoInTheWindow) {
    paintPhotographs();
    start();
    ASSERT_TRUE(shows(92));
    const QDir disk(photos());
    const QString source = disk.filePath(filesOnDisk().first());
    // The window answers while a storm goes on below it.
    for (int copy = 0; copy < 40; ++copy)
        ASSERT_TRUE(QFile::copy(source, disk.filePath(u"2025/West coast/copy%1.jpg"_s.arg(copy))));
    desktop.key(u"End"_s);
    EXPECT_TRUE(waitFor([](const State& s) { return !s.selected().isEmpty(); }));
    EXPECT_TRUE(shows(132));

    const QString renamed = u"Lake in winter"_s;
    ASSERT_TRUE(QDir().rename(
        disk.filePath(u"2021/Lake in autumn"_s), disk.filePath(u"2021/"_s + renamed)));
    EXPECT_TRUE(waitForRows(groupPanel, {renamed}, {u"Lake in autumn"_s}));
    for (int copy = 0; copy < 40; ++copy)
        ASSERT_TRUE(QFile::remove(disk.filePath(u"2025/West coast/copy%1.jpg"_s.arg(copy))));
    EXPECT_TRUE(shows(92));
    ASSERT_TRUE(QDir(disk.filePath(u"2022"_s)).removeRecursively());
    EXPECT_TRUE(shows(74));
    EXPECT_TRUE(waitForRows(groupPanel, {u"2021"_s}, {u"2022"_s}));
    desktop.key(u"Home"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() == 0; }));
    const QString first = state().items().first().name;
    const QString path = filesOnDisk().filter(first).first();
    ASSERT_TRUE(QFile::rename(photo(path), photo(path).replace(first, u"aaa.jpg"_s)));
    EXPECT_TRUE(waitFor([&](const State& s) {
        return !s.item(u"aaa.jpg"_s).name.isEmpty() && s.item(first).name.isEmpty();
    }));
    quit();
}

} // namespace
