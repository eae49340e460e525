#include "shell/sidebar/RootRelocation.h"

#include "core/Paths.h"
#include "library/PBAliasManager.h"
#include "library/PBAliasResolver.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "shell/sidebar/FolderPrompts.h"

using platform::Bookmark;
using platform::MainLoop;

RootRelocation::RootRelocation(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {}

RootRelocation::~RootRelocation() {
    if (auto* loop = MainLoop::instance()) loop->cancelPreviousPerformRequestsWithTarget(this);
}

void RootRelocation::locateFolder(const std::shared_ptr<PBAliasObject>& aliasObject) {
    platform::assertMainThread();
    if (aliasObject->isMounted()) return;
    _parts.prompts.chooseFolderOfRoot(
        aliasObject->displayName(), startFolder(*aliasObject),
        [this, aliasObject](const QString& path) {
            if (path.isEmpty()) return;
            // The dialog goes first: another one may follow.
            MainLoop::instance()->performAfterDelay(
                this, "take", std::chrono::milliseconds(0),
                [this, aliasObject, path] { take(aliasObject, path); });
        });
}

/// The nearest folder around the root's last place; empty where to ask for it may take long.
QString RootRelocation::startFolder(const PBAliasObject& aliasObject) const {
    if (aliasObject.type() != PBAliasObject::Local) return {};
    QStringList parts = PBUtilities::pathComponents(aliasObject.reservePath());
    while (parts.size() > 2) {
        parts.removeLast();
        const QString folder = PBUtilities::pathWithComponents(parts);
        if (_parts.aliasResolver.isFolder(folder)) return folder;
    }
    return {};
}

void RootRelocation::take(const std::shared_ptr<PBAliasObject>& aliasObject, const QString& path) {
    const QString folder = PBUtilities::pathWithComponents(PBUtilities::pathComponents(path));
    QString below;
    const auto holder = _parts.aliasManager.appropriateAliasObjectForPath(folder, &below, true);
    if (holder && below.isEmpty()) {
        // Also when the root came back while the dialog was open.
        return _parts.prompts.alertFolderAliasIsAlreadyExist(holder->displayName());
    }
    if (holder) {
        return _parts.prompts.alertFolderIsInSidebar(
            PBUtilities::displayNameOfPath(folder), holder->displayName());
    }
    const auto likeness = _parts.aliasResolver.likeness(*aliasObject, folder);
    if (!likeness) return _parts.prompts.alertCantUseFolder(folder);
    const auto use = [this, aliasObject, folder, bookmark = likeness->bookmark] {
        if (!settle({aliasObject, bookmark}, folder)) _parts.prompts.alertCantUseFolder(folder);
    };
    if (likeness->isRoot) return use();
    _parts.prompts.askUseUnlikeFolder(
        PBUtilities::displayNameOfPath(folder), aliasObject->displayName(),
        [aliasObject, use](bool isUsed) {
            if (isUsed && !aliasObject->isMounted()) use();
        });
}

bool RootRelocation::takeIfAway(const QString& path) {
    platform::assertMainThread();
    const auto candidate = awayRootOf(path);
    return candidate && settle(*candidate, path);
}

std::optional<RootRelocation::Candidate> RootRelocation::awayRootOf(const QString& path) const {
    std::optional<PBAliasBookmark> added;
    for (const auto& root : _parts.aliasManager.aliasArray()) {
        const auto bookmark = Bookmark::fromData(root->aliasData());
        if (root->isMounted() || !bookmark) continue;
        if (root->reservePath() == path || bookmark->path == path) {
            const auto likeness = _parts.aliasResolver.likeness(*root, path);
            if (likeness && likeness->isRoot) return Candidate(root, likeness->bookmark);
            continue;
        }
        if (!added) added = _parts.aliasResolver.newAlias(path);
        if (!added) return std::nullopt;
        const auto folder = Bookmark::fromData(added->data);
        if (folder && bookmark->isSameFolder(*folder, false)) return Candidate(root, *added);
    }
    return std::nullopt;
}

bool RootRelocation::settle(const Candidate& candidate, const QString& path) {
    const auto& [root, bookmark] = candidate;
    PBAliasManager& manager = _parts.aliasManager;
    const std::uint64_t state = root->state() & ~PBAliasObject::zombieState;
    if (root->isZombie() && !manager.updateState(*root, state)) return false;
    manager.aliasDidAnswer(*root, {PBAliasResolution::Outcome::Found, path, bookmark});
    if (!root->isMounted()) return false;
    _parts.aliasResolver.forgetQuestions(root->aliasId());
    _parts.located(root);
    return true;
}
