#include "core/SharedChunkArray.h"
#include "support/Support.h"

namespace {

using Array = SharedChunkArray<int, 4>;

void expectEqual(const Array& array, const std::vector<int>& model) {
    ASSERT_EQ(std::vector<int>(array.begin(), array.end()), model);
    ASSERT_EQ(std::pair(array.size(), array.empty()), std::pair(model.size(), model.empty()));
    for (std::size_t index = 0; index < model.size(); ++index)
        ASSERT_EQ(array[index], model[index]);
    const std::reverse_iterator back(array.end());
    ASSERT_TRUE(std::equal(model.rbegin(), model.rend(), back));
    if (model.empty()) return;
    ASSERT_EQ(std::pair(array.front(), array.back()), std::pair(model.front(), model.back()));
}

TEST(SharedChunkArrayTest, randomChangesEqualThoseOfAVectorAndLeaveCopiesAlone) {
    std::mt19937 random(11);
    Array array;
    std::vector<int> model;
    std::vector<std::pair<Array, std::vector<int>>> copies;
    for (int step = 0; step < 4000; ++step) {
        const auto at = static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
        const unsigned way = random() % 8;
        if (way == 0) {
            const int divisor = static_cast<int>(random() % 20) + 1;
            const auto leaves = [&](int element) { return element % divisor == 3; };
            EXPECT_EQ(array.eraseIf(leaves), std::erase_if(model, leaves));
        } else if (way < 3 && at < std::ssize(model)) {
            array.erase(array.begin() + at);
            model.erase(model.begin() + at);
        } else {
            array.insert(array.begin() + at, step);
            model.insert(model.begin() + at, step);
        }
        if (step % 100 == 50) copies.emplace_back(array, model);
        if (step % 50 == 0) expectEqual(array, model);
    }
    expectEqual(array, model);
    for (const auto& [copy, copiedModel] : copies)
        expectEqual(copy, copiedModel);
}

TEST(SharedChunkArrayTest, aChangeAfterACopyCostsOneChunk) {
    Array array;
    for (int element = 0; element < 400; ++element)
        array.push_back(element);
    const Array copy = array;
    EXPECT_EQ(array.sharedChunks(copy), 100U);
    array.erase(array.begin() + 17);
    EXPECT_EQ(array.sharedChunks(copy), 99U);
    array.push_back(400);
    EXPECT_EQ(array.sharedChunks(copy), 99U);
    EXPECT_EQ(array.eraseIf([](int element) { return element == 399; }), 1U);
    EXPECT_EQ(array.sharedChunks(copy), 98U);
    EXPECT_EQ(copy.size(), 400U);
}

} // namespace
