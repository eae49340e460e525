#include "group/GroupTypes.h"
#include "support/Support.h"

#include <QSet>

namespace {

using namespace group;

TEST(GroupTypesTest, eachTypeHasANameOfItsOwnAndAnIcon) {
    QSet<QString> names;
    for (int type = 0; type < groupTypeCount; ++type) {
        EXPECT_NE(imageWithGroupType(type).kind, IconName::Kind::None) << type;
        const QString name = descriptionWithGroupType(type);
        EXPECT_EQ(name.isEmpty(), type == AllImages) << type;
        EXPECT_FALSE(names.contains(name)) << name.toStdString();
        names.insert(name);
        // A name with an underscore or an inner capital is a key without a text.
        EXPECT_FALSE(name.contains(u'_')) << name.toStdString();
    }
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
    EXPECT_TRUE(sizeBucketLabel(12).isEmpty() && sizeBucketLabel(-1).isEmpty());
}

} // namespace
