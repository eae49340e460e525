#include "FMDB/FMDatabase.h"
#include "e2e/Program.h"
#include "support/Support.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>

namespace {

using e2e::Item;
using e2e::State;

const QString groupPanel = QStringLiteral("PBGroupOutlineView");
const QString sidebar = QStringLiteral("PBSourceOutlineView");
const QString breadcrumb = QStringLiteral("PBPathControl");

/// What the program is left with and must come back with.
const QStringList lasting{QStringLiteral("chain"),      QStringLiteral("sort"),
                          QStringLiteral("descending"), QStringLiteral("filter"),
                          QStringLiteral("subfolders"), QStringLiteral("folder")};

class SessionRunTest : public e2e::ProgramTest {
protected:
    auto waitForChain(const std::vector<int>& chain) {
        QJsonArray wanted;
        for (const int type : chain)
            wanted += type;
        return waitFor([=](const State& s) {
            return s.isAtRest() && s.json()[QStringLiteral("chain")] == wanted;
        });
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
        EXPECT_TRUE(
            waitFor([=](const State& s) { return s.json()[QStringLiteral("focus")] == list; }));
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
            return s.isAtRest() && s.json()[QStringLiteral("folder")] == path &&
                   s.browser(QStringLiteral("items")) == count;
        });
    }
};

TEST_F(SessionRunTest, aFolderAddedInTheDialogIsGroupedByEveryMenu) {
    paintPhotographs();
    start({}, false);
    EXPECT_EQ(state().json()[QStringLiteral("tip")], 1);
    clickPlace(QStringLiteral("addFolder"));
    const auto isAsking = [](const State& s) {
        return s.control(QStringLiteral("fileNameEdit")).has_value();
    };
    ASSERT_TRUE(waitFor(isAsking));
    takeFocus();
    desktop.type(photos());
    // The first Return may go to the list of completions, which comes when it likes.
    EXPECT_TRUE(waitFor(std::not_fn(isAsking), [&] {
        if (isAsking(state())) desktop.key(QStringLiteral("Return"));
    }));
    takeFocus();
    ASSERT_TRUE(waitForFolder({}, 92));
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("2025"), QStringLiteral("Dolomites")}, {}));
    EXPECT_EQ(state().json()[QStringLiteral("tip")], 0);

    clickStep(0, {QStringLiteral("EXIF")});
    // Ten general ones, EXIF, IPTC, a swap, Remove; and what EXIF has besides the year.
    EXPECT_TRUE(waitFor(
        [](const State& s) { return s.places(QStringLiteral("QMenu")).size() == 14 + 18; }));
    chooseInMenu({QStringLiteral("Camera Model")});
    EXPECT_TRUE(waitForChain({16, 5}));
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("NIKON Z 6")}, {}));
    clickStep(2, {QStringLiteral("IPTC"), QStringLiteral("Keywords")});
    EXPECT_TRUE(waitForChain({16, 5, 39}));
    EXPECT_EQ(state().places(breadcrumb).size(), 3);
    clickStep(1, {QStringLiteral("File Kind")});
    EXPECT_TRUE(waitForChain({16, 6, 39}));
    clickStep(0, {QStringLiteral("Camera Model <--> Keywords")});
    EXPECT_TRUE(waitForChain({39, 6, 16}));
    clickStep(1, {QStringLiteral("Remove")});
    EXPECT_TRUE(waitForChain({39, 16}));
    clickStep(0, {QStringLiteral("Remove")});
    EXPECT_TRUE(waitForChain({16}));
    EXPECT_TRUE(waitFor([](const State& s) { return s.browser(QStringLiteral("leaves")) == 4; }));
    clickStep(0, {QStringLiteral("Remove")});
    EXPECT_TRUE(waitForChain({}));
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("All")}, {QStringLiteral("NIKON Z 6")}));
    clickStep(0, {QStringLiteral("Star Rating")});
    EXPECT_TRUE(waitForChain({12}));

    const QString group = QStringLiteral("Group");
    const QString preset = QStringLiteral("Star Rating");
    choose({group, QStringLiteral("Save as Preset")});
    choose({group, QStringLiteral("Presets"), QStringLiteral("Captured: Year > Folder")});
    EXPECT_TRUE(waitForChain({3, 5}));
    clickPlace(QStringLiteral("group"));
    chooseInMenu({QStringLiteral("Presets"), preset});
    EXPECT_TRUE(waitForChain({12}));
    choose({group, QStringLiteral("Remove Preset"), preset});
    choose({group, QStringLiteral("Presets"), QStringLiteral("Captured: Year > Folder")});
    EXPECT_TRUE(waitForChain({3, 5}));

    const QString folder = QStringLiteral("Dolomites");
    clickRow(QStringLiteral("2024"), groupPanel);
    EXPECT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    desktop.key(QStringLiteral("Left"));
    EXPECT_TRUE(waitForRows(groupPanel, {}, {folder}));
    makePictures(QStringLiteral("2025/Added"), {QStringLiteral("added.png")});
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("2024")}, {folder}));
    EXPECT_TRUE(shows(93));
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("2024")}, {folder}));
    quitByKeys();
}

TEST_F(SessionRunTest, filterSearchOrderAndFolderDecideWhatIsShown) {
    paintPhotographs();
    start();
    ASSERT_TRUE(shows(92));
    quitByKeys();
    {
        FMDatabase catalogue(profile() + QStringLiteral("/files.db"));
        ASSERT_TRUE(catalogue.open());
        ASSERT_TRUE(
            catalogue.executeUpdate(QStringLiteral("UPDATE ImageFile SET FileFlag = 1 WHERE "
                                                   "FileName LIKE 'DSCF%' OR FileName LIKE 'P%'")));
        ASSERT_TRUE(catalogue.executeUpdate(
            QStringLiteral("UPDATE ImageFile SET FileStars = 3 WHERE FileName LIKE 'P%'")));
    }
    start();
    ASSERT_TRUE(waitForFolder({}, 92));
    choose({QStringLiteral("View"), QStringLiteral("Filter"), QStringLiteral("Flagged Only")});
    EXPECT_TRUE(shows(41));
    clickPlace(QStringLiteral("Show only photographs with stars"));
    EXPECT_TRUE(shows(10));
    clickPlace(QStringLiteral("Show only photographs with stars"));
    desktop.key(QStringLiteral("ctrl+f"));
    desktop.type(QStringLiteral("dscf"));
    EXPECT_TRUE(shows(31));
    clickPlace(QStringLiteral("Show only flagged photographs"));
    EXPECT_TRUE(shows(31));

    const QString view = QStringLiteral("View");
    const QString arrange = QStringLiteral("Arrange By");
    for (int step = 0; step < 2; ++step)
        clickStep(0, {QStringLiteral("Remove")});
    ASSERT_TRUE(waitForChain({}));
    using Key = std::function<qint64(const QFileInfo&)>;
    const auto date = [](const QFileInfo& file) { return file.lastModified().toSecsSinceEpoch(); };
    const auto kind = [](const QFileInfo&) { return 0; };
    const auto name = [](const QFileInfo& file) { return file.baseName().mid(4).toInt(); };
    QHash<QString, QFileInfo> files;
    for (const QString& file : filesOnDisk())
        files.insert(QFileInfo(file).fileName(), QFileInfo(photo(file)));
    const auto waitForOrder = [&](int type, bool descending, const Key& key) {
        return waitFor([&](const State& s) {
            std::vector<qint64> keys;
            for (const Item& item : s.items())
                keys.push_back(key(files[item.name]));
            if (descending) std::ranges::reverse(keys);
            return s.isAtRest() && s.json()[QStringLiteral("sort")] == type &&
                   s.json()[QStringLiteral("descending")] == descending && keys.size() > 9 &&
                   std::ranges::is_sorted(keys);
        });
    };
    const std::tuple<QString, int, bool, Key> orders[] = {
        {QStringLiteral("Name"), 1, false, name},
        {QStringLiteral("Date Taken"), 4, true, date},
        {QStringLiteral("Date Modified"), 3, true, date},
        {QStringLiteral("File Size"), 2, false, [](const QFileInfo& file) { return file.size(); }},
        {QStringLiteral("Image Size"), 6, false, kind},
        {QStringLiteral("File Kind"), 5, false, kind}};
    for (const auto& [entry, type, descending, key] : orders) {
        choose({view, arrange, entry});
        EXPECT_TRUE(waitForOrder(type, descending, key)) << entry.toStdString();
        choose({view, arrange, QString::fromLatin1(descending ? "Ascending" : "Descending")});
        EXPECT_TRUE(waitForOrder(type, !descending, key)) << entry.toStdString();
    }
    choose({view, arrange, QStringLiteral("Unsorted")});
    EXPECT_TRUE(waitForOrder(0, false, kind));
    desktop.key(QStringLiteral("ctrl+f"));
    desktop.key(QStringLiteral("Escape"));
    EXPECT_TRUE(shows(92));

    clickRow(QStringLiteral("photos"), sidebar);
    desktop.key(QStringLiteral("Right"));
    clickRow(QStringLiteral("2022"), sidebar);
    EXPECT_TRUE(waitForFolder(QStringLiteral("2022"), 18));
    clickPlace(QStringLiteral("subFolder"));
    EXPECT_TRUE(shows(0));
    desktop.key(QStringLiteral("ctrl+shift+s"));
    EXPECT_TRUE(shows(18));
    desktop.key(QStringLiteral("Right"));
    clickRow(QStringLiteral("Lisbon"), sidebar);
    EXPECT_TRUE(waitForFolder(QStringLiteral("2022/Lisbon"), 10));
    clickPlace(QStringLiteral("Back"));
    EXPECT_TRUE(waitForFolder(QStringLiteral("2022"), 18));
    desktop.key(QStringLiteral("alt+Left"));
    EXPECT_TRUE(waitForFolder({}, 92));
    clickPlace(QStringLiteral("Forward"));
    EXPECT_TRUE(waitForFolder(QStringLiteral("2022"), 18));
    desktop.key(QStringLiteral("alt+Right"));
    EXPECT_TRUE(waitForFolder(QStringLiteral("2022/Lisbon"), 10));
    quitByKeys();
}

/// Controls that lie partly over another, or beyond the window.
QStringList misplaced(const State& state) {
    QList<QPair<QString, QRect>> all;
    for (const QJsonValue& value : state.json()[QStringLiteral("controls")].toArray()) {
        const QString name = value[QStringLiteral("class")].toString() + u' ' +
                             value[QStringLiteral("name")].toString() +
                             value[QStringLiteral("text")].toString();
        // What takes hold of a divider lies over both panes.
        if (!name.contains(u"Handle")) all.append({name, e2e::rectOf(value.toObject())});
    }
    QStringList bad;
    for (const auto& [name, rect] : all) {
        if (!state.window().contains(rect)) bad += name + QStringLiteral(" is cut");
        for (const auto& [other, otherRect] : all) {
            if (rect.intersects(otherRect) && !rect.contains(otherRect) &&
                !otherRect.contains(rect))
                bad += name + QStringLiteral(" over ") + other;
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
        return waitFor([=](const State& s) {
            return s.isAtRest() && s.browser(QStringLiteral("thumbnailSize")) == size;
        });
    };
    const QString base = QStringLiteral("SourceGroupSplitPos");
    const QString left = QStringLiteral("GroupSplitPos");
    const QString right = QStringLiteral("InfoSplitPos");

    const QRect slider = state().place(QStringLiteral("thumbnailSize"));
    desktop.drag(slider.center(), {slider.right() + 20, slider.center().y()});
    desktop.release();
    EXPECT_TRUE(waitForThumbnails(256));
    desktop.key(QStringLiteral("ctrl+minus"));
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
        {QStringLiteral("F9"), base, 0},
        {QStringLiteral("ctrl+alt+1"), left, 0},
        {QStringLiteral("ctrl+alt+2"), left, 1},
        {QStringLiteral("ctrl+i"), right, 1}};
    for (const auto& [key, split, pane] : panes) {
        desktop.key(key);
        EXPECT_TRUE(waitForPane(split, pane, false)) << key.toStdString();
        desktop.key(key);
        EXPECT_TRUE(waitForPane(split, pane, true)) << key.toStdString();
        EXPECT_EQ(state().panes(left), arranged);
    }
    // What is hidden gives the keys to the browser.
    clickRow(QStringLiteral("2024"), groupPanel);
    clickPlace(QStringLiteral("Hide Groups"));
    EXPECT_TRUE(waitForPane(left, 1, false));
    EXPECT_EQ(state().json()[QStringLiteral("focus")], QStringLiteral("PBImageBrowserView"));
    clickPlace(QStringLiteral("Show Groups"));
    EXPECT_TRUE(waitForPane(left, 1, true));
    clickPlace(QStringLiteral("Hide Information"));
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
    desktop.key(QStringLiteral("F11"));
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    EXPECT_FALSE(state().control(QStringLiteral("QMenuBar")));
    EXPECT_TRUE(waitFor([](const State& s) { return misplaced(s).isEmpty(); }))
        << misplaced(state()).join(u'\n').toStdString();
    desktop.key(QStringLiteral("Escape"));
    EXPECT_TRUE(waitFor([&](const State& s) { return s.window() == normal; }));

    choose({QStringLiteral("View"), QStringLiteral("Arrange By"), QStringLiteral("Date Taken")});
    clickStep(2, {QStringLiteral("EXIF"), QStringLiteral("Aperture")});
    EXPECT_TRUE(waitForChain({3, 5, 21}));
    clickRow(QStringLiteral("photos"), sidebar);
    desktop.key(QStringLiteral("Right"));
    clickRow(QStringLiteral("2023"), sidebar);
    EXPECT_TRUE(waitForFolder(QStringLiteral("2023"), 24));
    const State before = state();
    // The next start begins with the window of before it filled the screen.
    desktop.key(QStringLiteral("F11"));
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    quitByKeys();

    startAgain();
    ASSERT_TRUE(waitForFolder(QStringLiteral("2023"), 24));
    const State after = state();
    for (const QString& name : lasting)
        EXPECT_EQ(after.json()[name], before.json()[name]) << name.toStdString();
    const QString splits = QStringLiteral("splits");
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.window() == before.window() && s.json()[splits] == before.json()[splits];
    }));
    EXPECT_TRUE(waitForThumbnails(240));
    quitByKeys();
}

TEST_F(SessionRunTest, photographsThatComeAndGoOnDiskComeAndGoInTheWindow) {
    paintPhotographs();
    start();
    ASSERT_TRUE(shows(92));
    const QDir disk(photos());
    const QString source = disk.filePath(filesOnDisk().first());
    // The window answers while a storm goes on below it.
    for (int copy = 0; copy < 40; ++copy)
        ASSERT_TRUE(QFile::copy(
            source, disk.filePath(QStringLiteral("2025/West coast/copy%1.jpg").arg(copy))));
    desktop.key(QStringLiteral("End"));
    EXPECT_TRUE(waitFor([](const State& s) { return !s.selected().isEmpty(); }));
    EXPECT_TRUE(shows(132));

    const QString renamed = QStringLiteral("Lake in winter");
    ASSERT_TRUE(QDir().rename(
        disk.filePath(QStringLiteral("2021/Lake in autumn")),
        disk.filePath(QStringLiteral("2021/") + renamed)));
    EXPECT_TRUE(waitForRows(groupPanel, {renamed}, {QStringLiteral("Lake in autumn")}));
    for (int copy = 0; copy < 40; ++copy)
        ASSERT_TRUE(
            QFile::remove(disk.filePath(QStringLiteral("2025/West coast/copy%1.jpg").arg(copy))));
    EXPECT_TRUE(shows(92));
    ASSERT_TRUE(QDir(disk.filePath(QStringLiteral("2022"))).removeRecursively());
    EXPECT_TRUE(shows(74));
    EXPECT_TRUE(waitForRows(groupPanel, {QStringLiteral("2021")}, {QStringLiteral("2022")}));
    desktop.key(QStringLiteral("Home"));
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() == 0; }));
    const QString first = state().items().first().name;
    const QString path = filesOnDisk().filter(first).first();
    ASSERT_TRUE(QFile::rename(photo(path), photo(path).replace(first, QStringLiteral("aaa.jpg"))));
    EXPECT_TRUE(waitFor([&](const State& s) {
        return !s.item(QStringLiteral("aaa.jpg")).name.isEmpty() && s.item(first).name.isEmpty();
    }));
    quitByKeys();
}

} // namespace
