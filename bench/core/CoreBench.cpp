// Sorted insertion against a stable sort of the same keys, and the comparison of paths by
// components against a plain comparison of the same texts.

#include "core/Paths.h"
#include "core/SortedArray.h"
#include "support/Ratio.h"

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {

struct Element {
    std::uint32_t key;
    std::int64_t sortCompare(const Element& other, int) const {
        return key < other.key ? -1 : key > other.key ? 1 : 0;
    }
};

using Elements = std::vector<std::shared_ptr<Element>>;

Elements randomElements(std::size_t count) {
    std::mt19937 random(1);
    Elements elements;
    for (std::size_t index = 0; index < count; ++index)
        elements.push_back(
            std::make_shared<Element>(Element{static_cast<std::uint32_t>(random())}));
    return elements;
}

void measureInsertion(const char* name, const Elements& elements) {
    bench::printRatio(
        name, 5,
        [&] {
            Elements sorted;
            for (const auto& element : elements)
                sorted.push_back(element);
            std::ranges::stable_sort(sorted, {}, [](const auto& element) { return element->key; });
            bench::keep(sorted.data());
        },
        [&] {
            Elements sorted;
            for (const auto& element : elements)
                sortAddObject(sorted, element, 0, false, EqualElements::AddedBehind);
            bench::keep(sorted.data());
        });
}

std::vector<QString> somePaths(std::size_t count) {
    std::mt19937 random(2);
    const QString folders[] = {
        QStringLiteral("Photos"), QStringLiteral("photos"), QStringLiteral("2023-05 Lisboa"),
        QStringLiteral("Übersicht")};
    std::vector<QString> paths;
    for (std::size_t index = 0; index < count; ++index) {
        QString path = QStringLiteral("/home/someone/Pictures");
        for (auto depth = random() % 5; depth > 0; --depth)
            path += u'/' + folders[random() % std::size(folders)];
        paths.push_back(path);
    }
    return paths;
}

/// Every path is compared with its neighbours, half of which lie above or below it.
template <typename Compare>
void compareAll(const std::vector<QString>& paths, Compare compare) {
    int sum = 0;
    for (std::size_t distance = 1; distance <= 20; ++distance) {
        for (std::size_t index = distance; index < paths.size(); ++index)
            sum += compare(paths[index - distance], paths[index]);
    }
    bench::keep(sum);
}

void measurePaths() {
    const std::vector<QString> paths = somePaths(5000);
    bench::printRatio(
        "comparePath, 100,000 pairs", 7,
        [&] {
            compareAll(paths, [](const QString& path, const QString& other) {
                return path.compare(other, Qt::CaseInsensitive);
            });
        },
        [&] {
            compareAll(paths, [](const QString& path, const QString& other) {
                return PBUtilities::comparePath(path, other);
            });
        });
}

} // namespace

int main() {
    Elements elements = randomElements(100'000);
    measureInsertion("sorted insertion, 100,000 in random order", elements);
    std::ranges::stable_sort(elements, {}, [](const auto& element) { return element->key; });
    measureInsertion("sorted insertion, 100,000 in order", elements);
    measurePaths();
    return 0;
}
