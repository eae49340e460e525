#include "group/GroupChainMenu.h"

#include "platform/program/LocalizedTexts.h"

#include <algorithm>
#include <utility>

namespace group {

namespace {

constexpr std::array<int, 11> generalTypes{
    ModificationYear,
    ModificationMonth,
    Folder,
    FileKind,
    FileSizeBucket,
    PixelCountBucket,
    Resolution,
    Place,
    Flag,
    StarRating,
    Tags};
constexpr std::array<int, 19> exifTypes{CameraMake,    CameraModel,  LensModel,       CaptureYear,
                                        CaptureMonth,  FocalLength,  Aperture,        ExposureTime,
                                        ExposureBias,  ExposureMode, ExposureProgram, ISOSpeed,
                                        FocusDistance, Flash,        MeteringMode,    WhiteBalance,
                                        Contrast,      Saturation,   Sharpness};

bool contains(std::span<const int> chain, int type) {
    return std::ranges::find(chain, type) != chain.end();
}

ChainMenuEntry entryOfType(std::span<const int> chain, std::size_t position, int type) {
    const int place = static_cast<int>(position);
    PBGroupMenuAction action{PBGroupMenuAction::Add, type};
    if (position < chain.size()) action = {PBGroupMenuAction::Replace, std::array{place, type}};
    return {descriptionWithGroupType(type), imageWithGroupType(type), action, {}};
}

std::vector<ChainMenuEntry>
entriesOfTypes(std::span<const int> chain, std::size_t position, std::span<const int> types) {
    std::vector<ChainMenuEntry> entries;
    for (const int type : types)
        if (!contains(chain, type)) entries.push_back(entryOfType(chain, position, type));
    return entries;
}

ChainMenuEntry submenu(QStringView key, std::vector<ChainMenuEntry> entries) {
    return {platform::localizedString(key), {}, std::nullopt, std::move(entries), true};
}

std::vector<int> iptcTypes() {
    std::vector<int> types;
    for (int type = FirstIPTC; type < groupTypeCount; ++type)
        types.push_back(type);
    return types;
}

void appendSwaps(
    std::vector<ChainMenuEntry>& menu, std::span<const int> chain, std::size_t position) {
    if (chain.size() < 2) return;
    for (std::size_t other = 0; other < chain.size(); ++other) {
        if (other == position) continue;
        const auto [first, second] = std::minmax(position, other);
        const QString title = QStringLiteral("%1 <--> %2")
                                  .arg(
                                      descriptionWithGroupType(chain[first]),
                                      descriptionWithGroupType(chain[second]));
        const std::array places{static_cast<int>(position), static_cast<int>(other)};
        menu.push_back({title, {}, PBGroupMenuAction{PBGroupMenuAction::Swap, places}, {}});
    }
    menu.push_back({});
}

bool isPosition(const GroupChain& chain, int position) {
    return position >= 0 && std::cmp_less(position, chain.size());
}

} // namespace

std::vector<ChainCell> cellsOfChain(std::span<const int> chain) {
    std::vector<ChainCell> cells;
    for (const int type : chain)
        cells.push_back({descriptionWithGroupType(type), imageWithGroupType(type)});
    if (chain.size() < maximalOfferedLinks)
        cells.push_back({QString(), {IconName::Kind::Named, QStringLiteral("add_n")}});
    return cells;
}

std::vector<ChainMenuEntry> groupMenuOfChain(std::span<const int> chain, std::size_t position) {
    std::vector<ChainMenuEntry> menu = entriesOfTypes(chain, position, generalTypes);
    menu.push_back({});
    menu.push_back(submenu(u"EXIF", entriesOfTypes(chain, position, exifTypes)));
    menu.push_back(submenu(u"IPTC", entriesOfTypes(chain, position, iptcTypes())));
    if (position >= chain.size()) return menu;
    menu.push_back({});
    appendSwaps(menu, chain, position);
    menu.push_back(
        {platform::localizedString(u"Remove"),
         {},
         PBGroupMenuAction{PBGroupMenuAction::Remove, static_cast<int>(position)},
         {}});
    return menu;
}

std::variant<GroupChain, ChainRefusal>
chainAfterAction(GroupChain chain, const PBGroupMenuAction& action, bool canUseGeocoder) {
    const int* single = std::get_if<int>(&action.value);
    const auto* pair = std::get_if<std::array<int, 2>>(&action.value);
    const auto needsGeocoder = [&](int type) { return type == Place && !canUseGeocoder; };
    switch (action.type) {
    case PBGroupMenuAction::Add:
        if (!single) break;
        if (needsGeocoder(*single)) return ChainRefusal::NeedsGeocoder;
        chain.push_back(*single);
        return chain;
    case PBGroupMenuAction::Remove:
        if (!single || !isPosition(chain, *single)) break;
        chain.erase(chain.begin() + *single);
        return chain;
    case PBGroupMenuAction::Replace:
        if (!pair || !isPosition(chain, (*pair)[0])) break;
        if (needsGeocoder((*pair)[1])) return ChainRefusal::NeedsGeocoder;
        chain[static_cast<std::size_t>((*pair)[0])] = (*pair)[1];
        return chain;
    case PBGroupMenuAction::Swap:
        if (!pair || !isPosition(chain, (*pair)[0]) || !isPosition(chain, (*pair)[1])) break;
        std::swap(
            chain[static_cast<std::size_t>((*pair)[0])],
            chain[static_cast<std::size_t>((*pair)[1])]);
        return chain;
    }
    return ChainRefusal::Stale;
}

} // namespace group
