#include "core/Paths.h"

#include "support/Support.h"

TEST(PathsTest, pathsCompareByWholeComponentsWithoutCase) {
    const std::tuple<const char16_t*, const char16_t*, int> rows[] = {
        {u"/Photos/", u"/photos", 0},
        {u"", u"", 0},
        {u"/", u"/", 0},
        {u"", u"/", -2},
        {u"/a", u"", -2},
        {u"/a/b", u"/a/bc", -2},
        {u"/a/bc", u"/a/b", -2},
        {u"/", u"/a", 1},
        {u"/a", u"/", -1},
        {u"/a/B", u"/A/b/c", 1},
        {u"/a/b/c/", u"/a/b", -1},
        {u"a/b", u"/a/b", -2},
        {u"/Ärger", u"/ärger/x", 1},
        {u"//a///b", u"/a/b", 0}};
    for (const auto& [path, other, expected] : rows)
        EXPECT_EQ(PBUtilities::comparePath(path, other), expected)
            << qPrintable(QStringView(path).toString());
    EXPECT_EQ(PBUtilities::compareURL(QUrl(), QUrl()), 0);
    EXPECT_EQ(PBUtilities::compareURL(QUrl(), QUrl::fromLocalFile(u"/a"_s)), -2);
}

TEST(PathsTest, ancestorIsTheDeepestCommonFolder) {
    using PBUtilities::ancestorOfPath;
    EXPECT_EQ(ancestorOfPath(u"/A/b/c", u"/a/B/d"), u"/A/b"_s);
    EXPECT_EQ(ancestorOfPath(u"/a", u"/b"), u"/"_s);
    EXPECT_EQ(ancestorOfPath(u"", u"/b"), u"/"_s);
    EXPECT_EQ(ancestorOfPath(u"x/y", u"z"), u"/"_s);
    EXPECT_EQ(ancestorOfPath(u"/a/b/", u"/a/b"), u"/a/b"_s);
}

TEST(PathsTest, listsOfPathsAreEqualInAnyOrderAndCase) {
    using PBUtilities::isEqualPathArray;
    const QStringList one{u"/b"_s, u"/A"_s};
    EXPECT_TRUE(isEqualPathArray(one, {u"/a"_s, u"/B"_s}));
    EXPECT_TRUE(isEqualPathArray({}, {}));
    EXPECT_FALSE(isEqualPathArray(one, {u"/a"_s}));
    EXPECT_FALSE(isEqualPathArray(one, {u"/a"_s, u"/c"_s}));
    EXPECT_FALSE(isEqualPathArray(one, {u"/a"_s, u"/a"_s}));
    const std::array chain{3, 5};
    const std::array turned{5, 3};
    EXPECT_TRUE(PBUtilities::isEqualGroupTypeArray(chain, std::array{3, 5}));
    EXPECT_FALSE(PBUtilities::isEqualGroupTypeArray(chain, turned));
}

TEST(PathsTest, parentHasFewerAndTheSameComponents) {
    using PBUtilities::isParentOfPath;
    EXPECT_TRUE(isParentOfPath(u"/a", u"/A/b"));
    EXPECT_TRUE(isParentOfPath(u"", u"/"));
    EXPECT_FALSE(isParentOfPath(u"", u""));
    EXPECT_FALSE(isParentOfPath(u"/a", u"/a/"));
    EXPECT_FALSE(isParentOfPath(u"/a/b", u"/a"));
    EXPECT_FALSE(isParentOfPath(u"/a", u"/ab/c"));
}
