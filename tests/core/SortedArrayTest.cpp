#include "core/SortedArray.h"
#include "support/Support.h"

namespace {

struct Element {
    double key;
    int arrival;
    std::int64_t sortCompare(const Element& other, int) const {
        return key < other.key ? -1 : key > other.key ? 1 : key == other.key ? 0 : -2;
    }
};

constexpr auto AddedBehind = EqualElements::AddedBehind;
constexpr auto Refused = EqualElements::Refused;
using Array = std::vector<std::shared_ptr<Element>>;

std::shared_ptr<Element> element(double key, int arrival = 0) {
    return std::make_shared<Element>(Element{key, arrival});
}

TEST(SortedArrayTest, insertionEqualsAStableSortInBothOrders) {
    std::mt19937 random(7);
    for (const bool descending : {false, true}) {
        for (int size = 0; size < 60; ++size) {
            Array sorted;
            Array model;
            for (int arrival = 0; arrival < size; ++arrival) {
                const auto added = element(static_cast<int>(random() % 10), arrival);
                model.push_back(added);
                EXPECT_EQ(sortAddObject(sorted, added, 0, descending, AddedBehind), added.get());
            }
            std::ranges::stable_sort(model, [&](const auto& left, const auto& right) {
                return descending ? left->key > right->key : left->key < right->key;
            });
            ASSERT_EQ(sorted, model) << size;
            for (const auto& held : sorted) {
                const auto index = sortIndexOfObject(sorted, Element{held->key, -1}, 0, descending);
                ASSERT_NE(index, NSNotFound);
                EXPECT_EQ(sorted[static_cast<std::size_t>(index)]->key, held->key);
            }
            for (const double key : {-1, 10})
                EXPECT_EQ(sortIndexOfObject(sorted, Element{key, -1}, 0, descending), NSNotFound);
        }
    }
}

TEST(SortedArrayTest, equalElementIsAnsweredInsteadOfInserted) {
    const auto first = element(5, 1);
    Array array{element(3), first};
    EXPECT_EQ(sortAddObject(array, element(5, 2), 0, false, Refused), first.get());
    EXPECT_EQ(sortAddObject(array, first, 0, false, AddedBehind), first.get());
    EXPECT_EQ(array.size(), 2U);
}

TEST(SortedArrayTest, undefinedOrderCountsAsGreater) {
    Array array;
    for (int i = 0; i < 5; ++i) {
        const auto* added = sortAddObject(array, element(NAN), 0, true, AddedBehind);
        EXPECT_EQ(array.back().get(), added);
    }
}

} // namespace
