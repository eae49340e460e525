#include "group/GroupPresets.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace group {

namespace {

const QString& settingsKey() {
    static const QString key = QStringLiteral("FavoriteGroupArrayArray");
    return key;
}

using Type = GroupPresets::Action::Type;

GroupPresets::Entry command(const QString& title, Type type, GroupChain chain = {}) {
    return {title, {}, GroupPresets::Action{type, std::move(chain)}, {}};
}

GroupPresets::Entry command(QStringView key, Type type) {
    return command(platform::localizedString(key), type);
}

GroupPresets::Entry submenu(QStringView key, std::vector<GroupPresets::Entry> entries) {
    return {platform::localizedString(key), {}, std::nullopt, std::move(entries), true};
}

std::vector<GroupPresets::Entry> presetEntries(const std::vector<GroupChain>& chains, Type type) {
    std::vector<GroupPresets::Entry> entries;
    for (const GroupChain& chain : chains)
        entries.push_back(command(titleOfChain(chain), type, chain));
    return entries;
}

std::vector<GroupPresets::Entry> selection(const std::vector<GroupChain>& chains) {
    std::vector<GroupPresets::Entry> entries = presetEntries(chains, Type::Select);
    if (entries.empty())
        entries.push_back({platform::localizedString(u"No Preset"), {}, std::nullopt, {}});
    return entries;
}

/// What follows the presets in either menu, with a separator first.
std::vector<GroupPresets::Entry> changes(const std::vector<GroupChain>& chains) {
    std::vector<GroupPresets::Entry> removal = presetEntries(chains, Type::Remove);
    if (!removal.empty()) removal.push_back({});
    removal.push_back(command(u"Remove All", Type::RemoveAll));
    return {
        {}, command(u"Save as Preset", Type::Save), submenu(u"Remove Preset", std::move(removal)),
        {}, command(u"GroupCopyto", Type::CopyTo),  command(u"GroupMoveto", Type::MoveTo),
    };
}

} // namespace

QString titleOfChain(std::span<const int> chain) {
    if (chain.empty()) return platform::localizedString(u"All");
    QStringList descriptions;
    for (const int type : chain)
        descriptions.append(descriptionWithGroupType(type));
    return descriptions.join(QStringLiteral(" > "));
}

void GroupPresets::seedIfAbsent(bool canUseGeocoder) {
    if (_settings.hasKey(settingsKey())) return;
    std::vector<GroupChain> chains{{CaptureYear, Folder}};
    if (canUseGeocoder) chains.push_back({CaptureYear, Place});
    for (const GroupChain& chain :
         {GroupChain{CaptureYear, CameraModel}, GroupChain{CaptureYear, LensModel},
          GroupChain{CaptureYear, Aperture}, GroupChain{CaptureYear, ISOSpeed},
          GroupChain{CameraModel, LensModel}}) {
        chains.push_back(chain);
    }
    store(chains);
}

std::vector<GroupChain> GroupPresets::chains() const {
    return _settings.integerArraysForKey(settingsKey()).value_or(std::vector<GroupChain>());
}

bool GroupPresets::has(const GroupChain& chain) const {
    const std::vector<GroupChain> stored = chains();
    return std::ranges::find(stored, chain) != stored.end();
}

void GroupPresets::store(const std::vector<GroupChain>& chains) {
    platform::assertMainThread();
    _settings.setIntegerArrays(chains, settingsKey());
}

bool GroupPresets::save(const GroupChain& chain) {
    if (has(chain)) return false;
    std::vector<GroupChain> stored = chains();
    stored.push_back(chain);
    store(stored);
    return true;
}

bool GroupPresets::remove(const GroupChain& chain) {
    std::vector<GroupChain> stored = chains();
    const auto found = std::ranges::find(stored, chain);
    if (found == stored.end()) return false;
    stored.erase(found);
    store(stored);
    return true;
}

void GroupPresets::removeAll() {
    store({});
}

std::vector<GroupPresets::Entry> GroupPresets::menu() const {
    const std::vector<GroupChain> stored = chains();
    std::vector<Entry> entries = changes(stored);
    entries.insert(entries.begin(), submenu(u"Presets", selection(stored)));
    return entries;
}

std::vector<GroupPresets::Entry> GroupPresets::buttonMenu() const {
    const std::vector<GroupChain> stored = chains();
    std::vector<Entry> entries = selection(stored);
    std::ranges::move(changes(stored), std::back_inserter(entries));
    return entries;
}

} // namespace group
