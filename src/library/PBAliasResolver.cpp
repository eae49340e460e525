#include "library/PBAliasResolver.h"

#include "core/Paths.h"
#include "platform/files/Spelling.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainLoop.h"
#include "platform/work/MainThread.h"

#include <utility>

using platform::Bookmark;
using platform::Resolution;
using Outcome = platform::Resolution::Outcome;

namespace {

/// A search may take its whole time; the rest is for the threads.
constexpr std::chrono::milliseconds resolveLimit =
    platform::BookmarkResolver::timeLimit + std::chrono::milliseconds(50);
/// The user has just chosen the folder and waits for it.
constexpr std::chrono::milliseconds newAliasLimit{3000};
/// What a search in the background may take, when nobody waits.
constexpr std::chrono::milliseconds searchLimit{10'000};

} // namespace

namespace PBUtilities {

std::uint64_t aliasTypeOfVolume(const platform::VolumeProperties& properties) {
    if (!properties.isLocal) return PBAliasObject::Network;
    if (properties.isEjectable || properties.isRemovable) return PBAliasObject::Removable;
    return properties.isInternal ? PBAliasObject::Local : PBAliasObject::Removable;
}

} // namespace PBUtilities

PBAliasResolver::PBAliasResolver(
    platform::BoundedCalls& calls, platform::VolumeMounter* mounter,
    platform::VolumeSources sources, platform::BookmarkResolver::Clock clock)
    : _calls(calls), _mounter(mounter),
      _resolver(std::make_shared<const platform::BookmarkResolver>(sources, std::move(clock))),
      _commonFolders(platform::BookmarkResolver::commonFolders(sources)),
      _self(std::make_shared<PBAliasResolver*>(this)) {}

PBAliasResolver::~PBAliasResolver() {
    _stop.request_stop();
}

QString PBAliasResolver::lane(const PBAliasObject& aliasObject) {
    const auto bookmark = Bookmark::fromData(aliasObject.aliasData());
    if (!bookmark) return aliasObject.reservePath();
    return QString::fromUtf8(bookmark->fileSystem.type + ' ' + bookmark->fileSystem.source);
}

Resolution PBAliasResolver::resolve(
    const PBAliasObject& aliasObject, bool mount, const QStringList& otherRoots, QString* error) {
    platform::assertMainThread();
    const Work work =
        [resolver = _resolver, data = aliasObject.aliasData(),
         places = platform::SearchPlaces{aliasObject.reservePath(), otherRoots, _commonFolders},
         stop = _stop.get_token()](std::chrono::milliseconds limit) -> Resolution {
        if (const auto bookmark = Bookmark::fromData(data)) {
            Resolution found = resolver->resolve(*bookmark, places, limit, stop);
            found.path = platform::spelledAsOnDisk(found.path);
            return found;
        }
        // Damaged bytes: all that is known is where the folder was seen.
        if (PBUtilities::isFolder(places.lastSeenPath)) {
            return {Outcome::Found, places.lastSeenPath};
        }
        return {};
    };
    const std::weak_ptr<PBAliasResolver*> self = _self;
    const qint64 aliasId = aliasObject.aliasId();
    const auto late = [self, aliasId, work](const Resolution& resolution) {
        if (const auto alive = self.lock()) (*alive)->tell(aliasId, resolution, work);
    };
    const Resolution resolution =
        _calls
            .call<Resolution>(
                lane(aliasObject), QStringLiteral("resolve %1").arg(aliasId), resolveLimit,
                [work] { return work(platform::BookmarkResolver::timeLimit); }, late)
            .value_or(Resolution());
    if (resolution.outcome == Outcome::Unfinished) searchOn(aliasId, work);
    if (mount && resolution.outcome == Outcome::VolumeAbsent) mountVolume(aliasObject, error);
    return resolution;
}

void PBAliasResolver::tell(qint64 aliasId, const Resolution& resolution, const Work& work) {
    if (resolution.outcome == Outcome::Unfinished) {
        searchOn(aliasId, work);
    } else if (_lateAnswer) {
        _lateAnswer(aliasId, resolution);
    }
}

/// In a lane of its own: the other roots of the volume need not wait for it.
void PBAliasResolver::searchOn(qint64 aliasId, const Work& work) {
    const std::weak_ptr<PBAliasResolver*> self = _self;
    const auto finished = _calls.call<Resolution>(
        QStringLiteral("search %1").arg(aliasId), QStringLiteral("search"),
        std::chrono::milliseconds(0), [work] { return work(searchLimit); },
        [self, aliasId](const Resolution& resolution) {
            const auto alive = self.lock();
            if (alive && (*alive)->_lateAnswer) (*alive)->_lateAnswer(aliasId, resolution);
        });
    if (finished && _lateAnswer) {
        // Nobody expects the answer within the call.
        platform::MainLoop::instance()->post(
            platform::MainLoop::Mode::Common, [self, aliasId, resolution = *finished] {
                const auto alive = self.lock();
                if (alive && (*alive)->_lateAnswer) (*alive)->_lateAnswer(aliasId, resolution);
            });
    }
}

void PBAliasResolver::mountVolume(const PBAliasObject& aliasObject, QString* error) {
    const auto bookmark = Bookmark::fromData(aliasObject.aliasData());
    const bool canTry = _mounter && bookmark && _mounter->canMount(bookmark->fileSystem);
    if (!canTry) {
        if (error) *error = platform::localizedString(u"VolumeNotConnected");
        return;
    }
    const std::weak_ptr<PBAliasResolver*> self = _self;
    const qint64 aliasId = aliasObject.aliasId();
    // Success is told by the mount table.
    _mounter->mount(bookmark->fileSystem, [self, aliasId](const QString& problem) {
        const auto alive = self.lock();
        if (!alive || problem.isEmpty() || !(*alive)->_mountFailure) return;
        (*alive)->_mountFailure(aliasId, problem);
    });
}

bool PBAliasResolver::isFolder(const QString& path) {
    platform::assertMainThread();
    return _calls
        .call<bool>(
            QStringLiteral("look ") + path, path, resolveLimit,
            [path] { return PBUtilities::isFolder(path); }, {})
        .value_or(false);
}

QString PBAliasResolver::spelledAsOnDisk(const QString& path) {
    platform::assertMainThread();
    return _calls
        .call<QString>(
            QStringLiteral("spell ") + path, path, resolveLimit,
            [path] { return platform::spelledAsOnDisk(path); }, {})
        .value_or(path);
}

std::optional<PBAliasResolver::NewAlias> PBAliasResolver::newAlias(const QString& path) {
    platform::assertMainThread();
    using Answer = std::optional<NewAlias>;
    const auto work = [resolver = _resolver, path]() -> Answer {
        const auto bookmark = Bookmark::bookmarkOfFolder(path, resolver->volumes());
        if (!bookmark) return std::nullopt;
        const auto properties = resolver->volumes().propertiesOfPath(path);
        return NewAlias{bookmark->data(), PBUtilities::aliasTypeOfVolume(properties)};
    };
    return _calls.call<Answer>(QStringLiteral("new ") + path, path, newAliasLimit, work, {})
        .value_or(std::nullopt);
}
