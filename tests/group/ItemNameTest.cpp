#include "group/ItemOrder.h"
#include "group/PBImageFileItem.h"

#include "group/CatalogueFixture.h"
#include "support/Support.h"

#include <thread>

using namespace group;
using support::makeItem;
using support::text;

namespace {

TEST(ItemNameTest, namesChangeWhileAnotherThreadSortsByThem) {
    const auto item = makeItem(text(u"IMG_5.jpg"));
    const auto other = makeItem(text(u"IMG_0050.jpg"));
    const QString& before = item->fileName();
    std::jthread sorting([&] {
        for (int round = 0; round < 2000; ++round)
            EXPECT_EQ(item->sortCompare(*other, SortFileName), -1);
    });
    for (int number = 6; number < 46; ++number)
        item->setFileName(text(u"IMG_%1.jpg").arg(number));
    sorting.join();
    EXPECT_EQ(item->fileName(), text(u"IMG_45.jpg"));
    EXPECT_EQ(before, text(u"IMG_5.jpg"));
}

} // namespace
