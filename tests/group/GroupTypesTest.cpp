#include "group/GroupTypes.h"
#include "group/CodedFields.h"
#include "support/Support.h"

#include <gtest/gtest.h>

#include <QSet>

#include <limits>
#include <vector>

namespace {

using namespace group;

std::vector<int> allTypes() {
    std::vector<int> types;
    for (int type = 0; type < groupTypeCount; ++type)
        types.push_back(type);
    return types;
}

/// The types of a list of column descriptors.
std::vector<int> typesOf(const ColumnDescriptors& descriptors) {
    std::vector<int> types;
    for (const auto& descriptor : descriptors) {
        EXPECT_EQ(descriptor.position, static_cast<std::size_t>(descriptor.type));
        types.push_back(descriptor.type);
    }
    return types;
}

TEST(GroupTypesTest, eachTypeHasANameOfItsOwnAndAnIcon) {
    QSet<QString> names;
    for (const int type : allTypes()) {
        EXPECT_NE(imageWithGroupType(type).kind, IconName::Kind::None) << type;
        const QString name = descriptionWithGroupType(type);
        EXPECT_EQ(name.isEmpty(), type == AllImages) << type;
        EXPECT_FALSE(names.contains(name)) << name.toStdString();
        names.insert(name);
        // A name with an underscore or an inner capital is a key without a text.
        EXPECT_FALSE(name.contains(u'_')) << name.toStdString();
    }
    EXPECT_EQ(descriptionWithGroupType(49), QStringLiteral("Creator's E-mail"));
}

TEST(GroupTypesTest, datesFlagAndStarsDescendAllOthersAscend) {
    std::vector<int> descending;
    for (const int type : allTypes())
        if (!isAscendingWithGroupType(type)) descending.push_back(type);
    EXPECT_EQ(descending, (std::vector{1, 2, 3, 4, 11, 12}));
}

TEST(GroupTypesTest, everyTableGetsItsColumns) {
    const auto chain = allTypes();
    EXPECT_EQ(
        typesOf(exifTypeForGroupType(chain)),
        (std::vector{3, 4, 17, 20, 21, 22, 23, 24, 25, 26, 27, 29, 30, 31, 32, 33, 34}));
    EXPECT_EQ(typesOf(exifAuxiliaryTypeForGroupType(chain)), (std::vector{18, 19, 27}));
    EXPECT_EQ(typesOf(tiffTypeForGroupType(chain)), (std::vector{15, 16}));
    EXPECT_EQ(typesOf(gpsTypeForGroupType(chain)), std::vector{14});
    EXPECT_EQ(iptcTypeForGroupType(chain).size(), 29U);
    EXPECT_EQ(
        iptcTypeForGroupType(chain).front().columns, QStringList{QStringLiteral("ObjectName")});
    EXPECT_EQ(iptcTypeForGroupType(chain).back().columns, QStringList{QStringLiteral("Credit")});
    EXPECT_EQ(gpsTypeForGroupType(chain).front().columns.size(), 4);

    const std::vector<int> focus{1, FocusDistance};
    ASSERT_EQ(exifTypeForGroupType(focus).size(), 1U);
    EXPECT_EQ(exifTypeForGroupType(focus)[0].position, 1U);
    EXPECT_EQ(exifTypeForGroupType(focus)[0].columns[0], QStringLiteral("SubjectDistance"));
    EXPECT_EQ(exifAuxiliaryTypeForGroupType(focus)[0].columns[0], QStringLiteral("FocusDistance"));
    EXPECT_TRUE(exifTypeForGroupType(std::vector{28, 5, 64, -1}).empty());
}

TEST(GroupTypesTest, unknownNumbersAnswerNothing) {
    for (const int type : {-1, 64, 1000, std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(isAscendingWithGroupType(type));
        EXPECT_TRUE(dbKeyWithGroupType(type).isEmpty());
        EXPECT_TRUE(descriptionWithGroupType(type).isEmpty());
        EXPECT_EQ(imageWithGroupType(type), IconName{});
    }
}

TEST(GroupTypesTest, bucketsIncludeTheirUpperBounds) {
    const std::pair<qint64, int> sizes[] = {
        {-5, 0},         {0, 0},
        {10240, 0},      {10241, 1},
        {51200, 1},      {1048576, 5},
        {1048577, 6},    {104857600, 10},
        {104857601, 11}, {std::numeric_limits<qint64>::max(), 11}};
    for (const auto& [size, bucket] : sizes)
        EXPECT_EQ(sizeBucket(size), bucket) << size;
    EXPECT_EQ(sizeBucketLabel(0), QStringLiteral("0 ~ 10K"));
    EXPECT_EQ(sizeBucketLabel(11), QStringLiteral("> 100M"));
    EXPECT_TRUE(sizeBucketLabel(12).isEmpty());
    EXPECT_TRUE(sizeBucketLabel(-1).isEmpty());
}

} // namespace
