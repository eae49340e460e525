#include "core/Paths.h"

#include "support/Support.h"

using namespace PBUtilities;

TEST(PathsTest, pathsCompareByWholeComponentsAndParentsHaveFewer) {
    using Row = std::tuple<const char16_t*, const char16_t*, int>;
    for (const auto& [path, other, expected] :
         {Row{u"/Photos/", u"/Photos", 0}, Row{u"/Photos", u"/photos", -2},
          Row{u"/trip", u"/Trip/x", -2}, Row{u"", u"", 0}, Row{u"/", u"/", 0}, Row{u"", u"/", -2},
          Row{u"/a", u"", -2}, Row{u"/a/b", u"/a/bc", -2}, Row{u"/", u"/a", 1},
          Row{u"/a", u"/", -1}, Row{u"/a/B", u"/a/B/c", 1}, Row{u"/a/b/c/", u"/a/b", -1},
          Row{u"a/b", u"/a/b", -2}, Row{u"/Ärger", u"/Ärger/x", 1}, Row{u"//a///b", u"/a/b", 0}}) {
        SCOPED_TRACE(QString::fromUtf16(path).toStdString());
        EXPECT_EQ(comparePath(path, other), expected);
        // The empty path is above all others.
        EXPECT_EQ(isParentOfPath(path, other), expected == 1 || (*path == 0 && *other != 0));
    }
}

TEST(PathsTest, listsAreEqualByTheirElements) {
    const QStringList one{u"/b"_s, u"/A"_s};
    EXPECT_TRUE(isEqualPathArray(one, {u"/A"_s, u"/b"_s}) && isEqualPathArray({}, {}));
    EXPECT_FALSE(isEqualPathArray(one, {u"/A"_s}) || isEqualPathArray(one, {u"/A"_s, u"/c"_s}));
    EXPECT_FALSE(isEqualPathArray(one, {u"/a"_s, u"/b"_s})) << "another place to the disk";
    EXPECT_TRUE(isEqualGroupTypeArray(std::array{3, 5}, std::array{3, 5}));
    EXPECT_FALSE(isEqualGroupTypeArray(std::array{3, 5}, std::array{5, 3}));
}

TEST(PathsTest, nameIsTheLastPartWithoutLineBreaks) {
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"/", u"/"}, {u"/a/b//", u"b"}, {u"/a/b\nc\u007f", u"b c "}, {u"", u""}, {u"a", u"a"}};
    for (const auto& [path, name] : rows)
        EXPECT_EQ(displayNameOfPath(path), QStringView(name).toString());
}
