#include "viewer/slideshow/transitions/TransitionMap.h"

#include "viewer/slideshow/transitions/TransitionShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr float most = 65535.0F;
constexpr int rayCount = 1024;

std::uint16_t valueOf(float part) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(part, 0.0F, 1.0F) * most));
}

/// The finalizer of SplitMix64 (Steele, Lea, Flood, 2014): noise that is the same on every run.
std::uint64_t noise(std::uint64_t seed) {
    seed = (seed ^ (seed >> 30)) * 0xbf58476d1ce4e5b9U;
    seed = (seed ^ (seed >> 27)) * 0x94d049bb133111ebU;
    return seed ^ (seed >> 31);
}

template <typename Value>
void fill(TransitionMap& map, const Value& valueAt) {
    auto* target = map.values.data();
    for (int y = 0; y < map.size.height(); ++y)
        for (int x = 0; x < map.size.width(); ++x)
            *target++ = valueAt(x, y);
}

void fillFromMask(TransitionMap& map) {
    const QImage& mask = transitionMaskImage();
    if (mask.isNull()) return;
    const float xStep = static_cast<float>(mask.width()) / static_cast<float>(map.size.width());
    const float yStep = static_cast<float>(mask.height()) / static_cast<float>(map.size.height());
    const auto at = [&mask](int x, int y) {
        return static_cast<float>(mask.constScanLine(
            std::clamp(y, 0, mask.height() - 1))[std::clamp(x, 0, mask.width() - 1)]);
    };
    fill(map, [&](int x, int y) {
        const float column = (static_cast<float>(x) + 0.5F) * xStep - 0.5F;
        const float row = (static_cast<float>(y) + 0.5F) * yStep - 0.5F;
        const float left = std::floor(column);
        const float top = std::floor(row);
        const int firstX = static_cast<int>(left);
        const int firstY = static_cast<int>(top);
        const float right = column - left;
        const float below = row - top;
        const float upper = std::lerp(at(firstX, firstY), at(firstX + 1, firstY), right);
        const float lower = std::lerp(at(firstX, firstY + 1), at(firstX + 1, firstY + 1), right);
        return valueOf(std::lerp(upper, lower, below) / 255.0F);
    });
}

void fillWithGrains(TransitionMap& map) {
    const int grain =
        std::max(1, static_cast<int>(std::lround(3 * TransitionShapes::unitOf(map.size))));
    fill(map, [grain](int x, int y) {
        const auto column = static_cast<std::uint64_t>(x / grain) + 1;
        const auto row = static_cast<std::uint64_t>(y / grain) + 1;
        return static_cast<std::uint16_t>(noise(column * 0x9e3779b97f4a7c15U + row) >> 48);
    });
}

/// Holes in a grid that is turned by two radians; those near the middle come first.
void fillWithHoles(TransitionMap& map) {
    constexpr float angle = 2.0F;
    constexpr float lead = 0.35F;
    const float cell = 150 * TransitionShapes::unitOf(map.size);
    const float width = static_cast<float>(map.size.width());
    const float height = static_cast<float>(map.size.height());
    const float toCorner = std::hypot(width, height) / 2;
    const float cosine = std::cos(angle);
    const float sine = std::sin(angle);
    fill(map, [&](int x, int y) {
        const float right = static_cast<float>(x) + 0.5F - width / 2;
        const float down = static_cast<float>(y) + 0.5F - height / 2;
        const float column = (right * cosine + down * sine) / cell;
        const float row = (down * cosine - right * sine) / cell;
        const float fromHole =
            std::hypot(column - std::floor(column) - 0.5F, row - std::floor(row) - 0.5F) *
            std::numbers::sqrt2_v<float>;
        return valueOf((1 - lead) * fromHole + lead * std::hypot(right, down) / toCorner);
    });
}

void fillWithRays(TransitionMap& map) {
    std::vector<float> rays(rayCount + 1);
    for (int octave = 0; octave < 3; ++octave) {
        const int steps = 48 << octave;
        const float weight = 0.5F / static_cast<float>(1 << octave);
        for (int ray = 0; ray <= rayCount; ++ray) {
            const float place = static_cast<float>(ray) / rayCount * static_cast<float>(steps);
            const int step = static_cast<int>(place);
            const auto height = [&](int index) {
                const auto seed =
                    static_cast<std::uint64_t>(index % steps + 1) * 0x9e3779b97f4a7c15U;
                return static_cast<float>(noise(seed + static_cast<std::uint64_t>(octave)) >> 40) /
                       static_cast<float>(1 << 24);
            };
            rays[static_cast<std::size_t>(ray)] +=
                weight *
                std::lerp(height(step), height(step + 1), place - static_cast<float>(step));
        }
    }
    const float width = static_cast<float>(map.size.width());
    const float height = static_cast<float>(map.size.height());
    fill(map, [&](int x, int y) {
        const float turn = std::atan2(
                               static_cast<float>(y) + 0.5F - height / 2,
                               static_cast<float>(x) + 0.5F - width / 2) /
                           (2 * std::numbers::pi_v<float>)+0.5F;
        const float light = rays[static_cast<std::size_t>(turn * rayCount)];
        return valueOf(light * light * 1.6F);
    });
}

} // namespace

std::shared_ptr<const TransitionMap> makeTransitionMap(TransitionStyle style, const QSize& size) {
    void (*fillMap)(TransitionMap&) = nullptr;
    switch (style) {
    case TransitionStyle::Disintegrate:
        fillMap = fillFromMask;
        break;
    case TransitionStyle::Dissolve:
        fillMap = fillWithGrains;
        break;
    case TransitionStyle::Flash:
        fillMap = fillWithRays;
        break;
    case TransitionStyle::Mod:
        fillMap = fillWithHoles;
        break;
    default:
        break;
    }
    if (!fillMap || size.isEmpty()) return nullptr;
    auto map = std::make_shared<TransitionMap>();
    map->size = size;
    map->values.resize(
        static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()));
    fillMap(*map);
    return map;
}

const QImage& transitionMaskImage() {
    static const QImage mask = QImage(QStringLiteral(":/transitions/transitionmask.jpg"))
                                   .convertToFormat(QImage::Format_Grayscale8);
    return mask;
}

const QImage& restrictedShineImage() {
    static const QImage shine = QImage(QStringLiteral(":/transitions/restrictedshine.tiff"))
                                    .convertToFormat(QImage::Format_ARGB32);
    return shine;
}
