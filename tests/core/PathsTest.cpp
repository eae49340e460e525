#include "core/Paths.h"

#include "support/Support.h"

#include <gtest/gtest.h>

#include <array>

namespace {

TEST(PathsTest, pathsCompareByWholeComponentsWithoutCase) {
    struct Row {
        const char16_t* path;
        const char16_t* other;
        int expected;
    };
    const Row rows[] = {
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
        {u"//a///b", u"/a/b", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(QString::fromUtf16(row.path).toStdString());
        EXPECT_EQ(PBUtilities::comparePath(row.path, row.other), row.expected);
    }
    EXPECT_EQ(PBUtilities::compareURL(QUrl(), QUrl()), 0);
    EXPECT_EQ(PBUtilities::compareURL(QUrl(), QUrl::fromLocalFile(QStringLiteral("/a"))), -2);
}

TEST(PathsTest, componentsAreTakenApartAndJoined) {
    using PBUtilities::pathComponents;
    using PBUtilities::pathWithComponents;
    EXPECT_EQ(pathComponents(u"/"), QStringList{QStringLiteral("/")});
    EXPECT_EQ(pathComponents(u""), QStringList());
    const QStringList parts{QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b c")};
    EXPECT_EQ(pathComponents(u"/a//b c/"), parts);
    EXPECT_EQ(pathWithComponents(parts), QStringLiteral("/a/b c"));
    EXPECT_EQ(pathWithComponents(parts.mid(1)), QStringLiteral("a/b c"));
}

TEST(PathsTest, ancestorIsTheDeepestCommonFolder) {
    using PBUtilities::ancestorOfPath;
    EXPECT_EQ(ancestorOfPath(u"/A/b/c", u"/a/B/d"), QStringLiteral("/A/b"));
    EXPECT_EQ(ancestorOfPath(u"/a", u"/b"), QStringLiteral("/"));
    EXPECT_EQ(ancestorOfPath(u"", u"/b"), QStringLiteral("/"));
    EXPECT_EQ(ancestorOfPath(u"x/y", u"z"), QStringLiteral("/"));
    EXPECT_EQ(ancestorOfPath(u"/a/b/", u"/a/b"), QStringLiteral("/a/b"));
}

TEST(PathsTest, listsOfPathsAreEqualInAnyOrderAndCase) {
    using PBUtilities::isEqualPathArray;
    const QStringList one{QStringLiteral("/b"), QStringLiteral("/A")};
    EXPECT_TRUE(isEqualPathArray(one, {QStringLiteral("/a"), QStringLiteral("/B")}));
    EXPECT_TRUE(isEqualPathArray({}, {}));
    EXPECT_FALSE(isEqualPathArray(one, {QStringLiteral("/a")}));
    EXPECT_FALSE(isEqualPathArray(one, {QStringLiteral("/a"), QStringLiteral("/c")}));
    EXPECT_FALSE(isEqualPathArray(one, {QStringLiteral("/a"), QStringLiteral("/a")}));
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

} // namespace
