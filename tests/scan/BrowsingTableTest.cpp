#include "scan/ScanSupport.h"

namespace {

/// A picture with a different place in the line of each sort type.
struct Picture {
    const char* path;
    int width; ///< of a picture of one row, so that this orders by area, too
    int modified;
    int taken; ///< 0: nobody knows; the modification date stands in
    bool isFlagged;
    int stars;
    qint64 fileSize = 0;

    QString name() const { return QString::fromLatin1(path).section(u'/', -1); }
};

/// Two roots within another, the upper one removed from the sidebar. By name as people count: b2
/// before B10.
std::array pictures{
    Picture{"a.jpg", 50, 9, 20, true, 5},
    Picture{"sub/deep/aa.jpg", 70, 8, 0, true, 1},
    Picture{"b2.jpg", 90, 5, 12, true, 0},
    Picture{"B10.png", 10, 3, 0, false, 3},
    Picture{"zombie/nested/ba.png", 60, 7, 15, false, 2},
    Picture{"sub/c.png", 20, 1, 11, false, 0},
    Picture{"zombie/d.jpg", 30, 2, 30, true, 0},
    Picture{"zombie/nested/in/e.jpg", 40, 6, 0, true, 4}};

qint64 rank(const Picture& picture, int sortType) {
    const std::map<int, qint64> ranks{
        {group::SortFileName, &picture - pictures.data()},
        {group::SortFileSize, picture.fileSize},
        {group::SortModificationDate, picture.modified},
        {group::SortDateTaken, picture.taken != 0 ? picture.taken : picture.modified},
        {group::SortKind, picture.name().endsWith(u".png") ? 1 : 0}};
    const auto found = ranks.find(sortType);
    return found == ranks.end() ? picture.width : found->second;
}

QDateTime moment(int number) {
    return QDateTime(QDate(2020, 1, 1), QTime(0, number, 0));
}

} // namespace

/// Every way of browsing shows, from the disk and from the catalogue, what a plain model of it
/// says.
TEST_F(ScanTest, WhatIsShownFollowsFromFilterSearchSortRecursionAndSelection) {
    for (Picture& picture : pictures) {
        const QString name = QString::fromLatin1(picture.path);
        makePicture(name, {picture.width, 1});
        picture.fileSize = 1000 + picture.stars * 100 + picture.width;
        alter(name, picture.fileSize, moment(picture.modified));
        const QString taken = moment(picture.taken).toString(u"yyyy:MM:dd HH:mm:ss"_s);
        if (picture.taken != 0)
            importers.properties[picture.name()] = {
                {u"{Exif}"_s, PBDictionary{{u"DateTimeDigitized"_s, taken}}}};
    }
    addRoot(u"zombie"_s, PBAliasObject::zombieState);
    const auto nested = addRoot(u"zombie/nested"_s);
    const auto outer = root;

    const auto expectModel = [&](const QString& selected, const char* when) {
        QMap<QString, qint64> expected;
        for (const Picture& picture : pictures) {
            const QString place = QString::fromLatin1(picture.path).section(u'/', 0, -2);
            const bool isBelow = selected.isEmpty() || place.startsWith(selected + u'/');
            if (place != selected && !(isBelow && browsing.recurseSubFolder)) continue;
            if ((browsing.filter & group::FilterFlagged) != 0 && !picture.isFlagged) continue;
            if ((browsing.filter & group::FilterRated) != 0 && picture.stars == 0) continue;
            const qint64 order = rank(picture, browsing.sortType);
            if (picture.name().contains(browsing.searchString, Qt::CaseInsensitive))
                expected[picture.name()] = browsing.descendingSort ? -order : order;
        }
        const QStringList found = shown();
        EXPECT_EQ(support::sorted(found), expected.keys()) << when;
        const auto place = [&](const QString& name) { return expected[name]; };
        EXPECT_TRUE(
            browsing.sortType == group::SortNone || std::ranges::is_sorted(found, {}, place))
            << when << " filter " << browsing.filter << " sort " << browsing.sortType
            << " descending " << browsing.descendingSort << " in " << selected.toStdString();
    };

    for (int sortType = group::SortNone; sortType <= group::SortPixelArea; ++sortType) {
        for (const char* table : {"ImageFile", "Exif"})
            execute(u"delete from "_s + QLatin1StringView(table));
        browsing.sortType = sortType;
        scan();
        expectModel({}, "from the disk");
    }
    EXPECT_EQ(
        rows(u"select AliasId,RelativePath from Folder order by 1,2"_s),
        support::words("1|NULL 1|sub 1|sub/deep 2|NULL 3|NULL 3|in"))
        << "nested roots have folders of their own";
    for (const Picture& picture : pictures) {
        ASSERT_TRUE(files.executeUpdate(
            u"update ImageFile set FileFlag = ?, FileStars = ? where FileName = ?"_s,
            picture.isFlagged, picture.stars, picture.name()));
    }
    const quint64 inserted = figures.rowsInserted;
    const std::tuple<std::shared_ptr<PBAliasObject>, QString, QString> selections[] = {
        {outer, {}, {}}, {outer, u"sub"_s, u"sub"_s}, {nested, {}, u"zombie/nested"_s}};
    for (unsigned way = 0; way < 4 * 3 * 7 * 2 * 2 && !HasFailure(); ++way) {
        browsing.filter = way % 4;
        browsing.searchString = QStringList{{}, u"A"_s, u"zz"_s}[way / 4 % 3];
        browsing.sortType = static_cast<int>(way / 12 % 7);
        browsing.descendingSort = way / 84 % 2 != 0;
        browsing.recurseSubFolder = way / 168 != 0;
        const auto& [alias, relativePath, selected] = selections[way / 7 % 3];
        root = alias;
        finished = 0;
        scan(relativePath);
        expectModel(selected, "from the catalogue");
        EXPECT_EQ(finished, 1);
    }
    EXPECT_EQ(figures.rowsInserted, inserted);
    EXPECT_EQ(figures.rowsRemoved, 0U);
    expectConsistentCatalogue();
}
