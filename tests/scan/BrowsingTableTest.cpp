#include "scan/ScanSupport.h"

#include "group/ItemOrder.h"

#include <QDateTime>

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

    [[nodiscard]] QString name() const { return QString::fromLatin1(path).section(u'/', -1); }
    [[nodiscard]] QString extension() const { return name().section(u'.', -1); }
};

/// Two roots within another, the upper one removed from the sidebar.
std::array pictures{
    Picture{"b2.jpg", 90, 5, 12, true, 0},
    Picture{"B10.png", 10, 3, 0, false, 3},
    Picture{"a.jpg", 50, 9, 20, true, 5},
    Picture{"sub/c.png", 20, 1, 11, false, 0},
    Picture{"sub/deep/aa.jpg", 70, 8, 0, true, 1},
    Picture{"zombie/d.jpg", 30, 2, 30, true, 0},
    Picture{"zombie/nested/ba.png", 60, 7, 15, false, 2},
    Picture{"zombie/nested/in/e.jpg", 40, 6, 0, true, 4}};

double rank(const Picture& picture, int sortType) {
    switch (sortType) {
    case group::SortFileSize:
        return static_cast<double>(picture.fileSize);
    case group::SortModificationDate:
        return picture.modified;
    case group::SortDateTaken:
        return picture.taken != 0 ? picture.taken : picture.modified;
    default:
        return picture.width;
    }
}

/// By name as people count: b2 before B10.
constexpr std::array byName{"a.jpg",  "aa.jpg", "b2.jpg", "B10.png",
                            "ba.png", "c.png",  "d.jpg",  "e.jpg"};

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
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.seek(1000 + picture.stars * 100 + picture.width) && file.putChar(0));
        ASSERT_TRUE(file.flush());
        ASSERT_TRUE(file.setFileTime(moment(picture.modified), QFileDevice::FileModificationTime));
        picture.fileSize = file.size();
        if (picture.taken == 0) continue;
        importers.properties[picture.name()] = {
            {u"{Exif}"_s, PBDictionary{
                              {u"DateTimeDigitized"_s,
                               moment(picture.taken).toString(u"yyyy:MM:dd HH:mm:ss"_s)}}}};
    }
    addRoot(u"zombie"_s, PBAliasObject::zombieState);
    const auto nested = addRoot(u"zombie/nested"_s);
    const auto outer = root;

    const auto model = [&](const QString& selected) {
        std::vector<const Picture*> shown;
        for (const Picture& picture : pictures) {
            QString place = QString::fromLatin1(picture.path).section(u'/', 0, -2);
            const bool isIn = place == selected;
            const bool isBelow = selected.isEmpty() || place.startsWith(selected + u'/');
            if (!isIn && !(isBelow && browsing.recurseSubFolder)) continue;
            if ((browsing.filter & 1) != 0 && !picture.isFlagged) continue;
            if ((browsing.filter & 2) != 0 && picture.stars == 0) continue;
            if (picture.name().contains(browsing.searchString, Qt::CaseInsensitive))
                shown.push_back(&picture);
        }
        std::ranges::sort(shown, [&](const Picture* one, const Picture* other) {
            if (browsing.descendingSort) std::swap(one, other);
            if (browsing.sortType != group::SortFileName)
                return rank(*one, browsing.sortType) < rank(*other, browsing.sortType);
            const auto place = [](const Picture* picture) {
                return std::ranges::find(byName, picture->name().toStdString());
            };
            return place(one) < place(other);
        });
        return support::listed(shown, [](const auto* picture) { return picture->name(); });
    };
    const auto expectModel = [&](const QString& selected, const char* when) {
        QStringList expected = model(selected);
        QStringList found = shown();
        if (browsing.sortType == group::SortKind) {
            const auto isBefore = [&](const QString& one, const QString& other) {
                const bool less = one.section(u'.', -1) < other.section(u'.', -1);
                const bool more = one.section(u'.', -1) > other.section(u'.', -1);
                return browsing.descendingSort ? more : less;
            };
            EXPECT_TRUE(std::ranges::is_sorted(found, isBefore)) << found.join(u' ').toStdString();
        }
        if (browsing.sortType == group::SortKind || browsing.sortType == group::SortNone) {
            expected.sort();
            found.sort();
        }
        EXPECT_EQ(found, expected)
            << when << " filter " << browsing.filter << " search "
            << browsing.searchString.toStdString() << " sort " << browsing.sortType
            << " descending " << browsing.descendingSort << " recursive "
            << browsing.recurseSubFolder << " in " << selected.toStdString();
    };

    for (int sortType = group::SortNone; sortType <= group::SortPixelArea; ++sortType) {
        for (const char* table : {"ImageFile", "Exif"})
            ASSERT_TRUE(files.executeUpdate(u"delete from "_s + QLatin1StringView(table)));
        browsing.sortType = sortType;
        scan();
        expectModel({}, "from the disk");
    }
    for (const Picture& picture : pictures) {
        ASSERT_TRUE(files.executeUpdate(
            u"update ImageFile set FileFlag = ?, FileStars = ? where FileName = ?"_s,
            picture.isFlagged, picture.stars, picture.name()));
    }
    const quint64 inserted = figures.rowsInserted;
    for (unsigned way = 0; way < 4 * 3 * 7 * 2 * 2 && !HasFailure(); ++way) {
        browsing.filter = way % 4;
        browsing.searchString = QStringList{{}, u"A"_s, u"zz"_s}[way / 4 % 3];
        browsing.sortType = static_cast<int>(way / 12 % 7);
        browsing.descendingSort = way / 84 % 2 != 0;
        browsing.recurseSubFolder = way / 168 != 0;
        struct Selection {
            std::shared_ptr<PBAliasObject> root;
            const char* relativePath;
            const char* path;
        };
        const std::array selections{
            Selection{outer, "", ""}, Selection{outer, "sub", "sub"},
            Selection{nested, "", "zombie/nested"}};
        const Selection& selection = selections[way / 7 % 3];
        root = selection.root;
        finished = 0;
        scan(QString::fromLatin1(selection.relativePath));
        expectModel(QString::fromLatin1(selection.path), "from the catalogue");
        EXPECT_EQ(finished, 1);
    }
    EXPECT_EQ(figures.rowsInserted, inserted);
    EXPECT_EQ(figures.rowsRemoved, 0U);
    expectConsistentCatalogue();
}
