#include "app/RunningProgram.h"

#include "support/Rows.h"

namespace {

using Edit = fileactions::PhotographEdit;

/// Edits, undo, changes of the disk and other groupings, all at once.
struct EditStormTest : RunningProgramTest {
    EditStormTest() {
        for (int number = 0; number < 60; ++number)
            addPicture();
        EXPECT_TRUE(database.open());
    }

    unsigned below(std::size_t limit) { return static_cast<unsigned>(random() % limit); }
    void addPicture() { writePicture(path(u"p/%1/n%2.png"_s.arg(below(3)).arg(++names))); }
    /// Each time of another size.
    void writePicture(const QString& file) {
        support::writeFile(file, picture + QByteArray(++versions, 'x'));
        files.insert(file);
    }
    QString someFile() {
        return *std::next(files.begin(), static_cast<std::ptrdiff_t>(below(files.size())));
    }
    std::vector<qint64> somePhotographs() {
        std::vector<qint64> chosen;
        const std::size_t share = below(2) == 0 ? 2 : 30;
        for (const QString& id : support::rowsOf(database, u"select Id from ImageFile"_s))
            if (below(share) == 0) chosen.push_back(id.toLongLong());
        return chosen;
    }
    void edit() {
        const QStringList tags = support::words("lake city Anna");
        const QString& tag = tags[below(3)];
        const QString& other = tags[below(3)];
        const Edit::Change changes[] = {
            Edit::Rate{0},
            Edit::Rate{static_cast<int>(below(3))},
            Edit::ToggleFlag{},
            Edit::SetFlag{below(2) == 0},
            Edit::ChangeTags{{tag}, {other}},
            Edit::SetTags{},
            Edit::SetTags{{tag, other}},
            Edit::RenameTag{tag, other},
            Edit::Turn{90}};
        edits().run({.fileIds = somePhotographs(), .change = changes[below(std::size(changes))]});
    }
    void operation() {
        const unsigned what = below(12);
        if (what == 0) return addPicture();
        if (what == 1) return void(QFile::remove(files.extract(someFile()).value()));
        if (what == 2) return writePicture(someFile());
        if (what == 3) return edits().redo();
        if (what < 6) return edits().undo();
        edit();
    }
    void browseAnotherWay() {
        const std::vector<int> chains[] = {
            {group::StarRating, group::Flag}, {group::Tags, group::StarRating}, {group::Flag}, {}};
        controller->browsing().setFilter(below(2) == 0 ? 0 : below(4));
        groupBy(chains[below(4)]);
    }
    fileactions::EditQueue& edits() { return controller->marks().edits(); }

    QStringList shown() {
        QStringList all;
        const auto& leaves = browser().leaves();
        for (std::int64_t group = 0; group < leaves.leafCount(); ++group) {
            QString place;
            const PBGroupItem* node = leaves.leaf(group).data->groupItem();
            for (; node; node = node->parent())
                place.prepend(u" %1=%2"_s.arg(node->type()).arg(node->value().toText()));
            for (const auto& item : leaves.leaf(group).imageFiles)
                all += u"%1 %2 %3 %4%5"_s.arg(item->fileName())
                           .arg(item->star())
                           .arg(item->flagged() ? 1 : 0)
                           .arg((static_cast<int>(item->rotateAngle()) + 720) % 360)
                           .arg(place);
        }
        return support::sorted(all);
    }
    QStringList wanted() {
        QString columns;
        for (const int type : *controller->browsing().groupTypeArray()) {
            const QString column = type == group::StarRating ? u"ifnull(FileStars,0)"_s
                                   : type == group::Flag     ? u"ifnull(FileFlag,0)"_s
                                                             : u"ifnull(Tag,'')"_s;
            columns += u"||' %1='||%2"_s.arg(type).arg(column);
        }
        if (columns.isEmpty()) columns = u"||' 0='"_s;
        const auto filter = controller->browsing().filter();
        const QStringList rows = support::rowsOf(
            database, u"select FileSize,Folder.RelativePath||'/'||FileName,FileName||' '||"
                      "ifnull(FileStars,0)||' '||ifnull(FileFlag,0)||' '||"
                      "((cast(ifnull(RotateAngle,0) as integer)+720)%360)"_s +
                          columns +
                          u" from ImageFile join Folder on Folder.Id = FolderId where 1"_s +
                          ((filter & 1) != 0 ? u" and FileFlag = 1"_s : QString()) +
                          ((filter & 2) != 0 ? u" and FileStars > 0"_s : QString()));
        QStringList all;
        for (const QString& row : rows) {
            // What was written anew under a filter that left it out waits for a scan without one.
            const QFileInfo file(path(u"p/"_s + row.section(u'|', 1, 1)));
            if (file.size() == row.section(u'|', 0, 0).toLongLong()) all += row.section(u'|', 2);
        }
        return support::sorted(all);
    }

    static QString difference(QStringList shown, QStringList wanted) {
        QStringList missing;
        for (const QString& one : wanted)
            if (!shown.removeOne(one)) missing += one;
        return u"missing:\n"_s + missing.join(u'\n') + u"\ntoo much:\n"_s + shown.join(u'\n');
    }
    std::mt19937 random{5};
    const QByteArray picture = support::readFile(makePicture(u"picture.png"_s));
    std::set<QString> files;
    int names = 0;
    int versions = 0;
    FMDatabase database{catalogue()};
};

/// After each quiet moment the display has every photograph of the catalogue that it should, once,
/// with its marks and at its place.
TEST_F(EditStormTest, noPhotographIsShownTwiceOrLostOrAtAnotherPlaceThanItsMarksSay) {
    ASSERT_TRUE(controller->addFolders({path(u"p"_s)}));
    const auto isQuiet = [this] { return controller->isIdle() && shown() == wanted(); };
    ASSERT_TRUE(support::spinUntil(
        [&] { return controller->isIdle() && shown().size() == 60; }, std::chrono::seconds(60)));
    const int rounds = std::max(10, qEnvironmentVariableIntValue("VELMORA_STORM") / 50);
    for (int round = 0; round < rounds; ++round) {
        if (round % 2 == 0) browseAnotherWay();
        for (int done = 0; done < 20; ++done) {
            operation();
            for (unsigned turns = below(6); turns > 0; --turns)
                QCoreApplication::processEvents();
        }
        const bool isInStep = support::spinUntil(isQuiet, std::chrono::seconds(60));
        EXPECT_TRUE(isInStep) << difference(shown(), wanted()).toStdString() << "\nround " << round
                              << ", filter " << controller->browsing().filter() << ", idle "
                              << controller->isIdle();
        if (!isInStep) break;
    }
    const QStringList before = shown();
    controller->scan();
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(shown(), before) << "a tree made anew is the same";
}

} // namespace
