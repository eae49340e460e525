#pragma once

#include "library/PBAliasObject.h"
#include "platform/volumes/BookmarkResolver.h"
#include "platform/volumes/VolumeMounter.h"
#include "platform/work/BoundedCalls.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace PBUtilities {

/// The type of a folder root on such a volume: 1 if it is not local, else 2 if it is ejectable,
/// removable or not internal, else 0.
[[nodiscard]] std::uint64_t aliasTypeOfVolume(const platform::VolumeProperties& properties);

} // namespace PBUtilities

/// Resolves folder roots by their bookmarks without ever waiting long: what a disk does not answer
/// in time counts as unanswered, and is told when it comes. A search that the waiting cut short
/// goes on in the background, so that a folder is never taken for gone because the machine was
/// slow. Main thread.
class PBAliasResolver {
public:
    /// A root's answer that came late, or after its volume was mounted for it.
    using LateAnswer = std::function<void(qint64 aliasId, const platform::Resolution& resolution)>;
    using MountFailure = std::function<void(qint64 aliasId, const QString& error)>;

    /// What the catalogue keeps of a new root.
    struct NewAlias {
        QByteArray data;
        std::uint64_t type = PBAliasObject::Local;
    };

    /// `calls` and `mounter` outlive this object; `mounter` may be empty: nothing can be mounted.
    PBAliasResolver(
        platform::BoundedCalls& calls, platform::VolumeMounter* mounter,
        platform::VolumeSources sources = {}, platform::BookmarkResolver::Clock clock = {});
    PBAliasResolver(const PBAliasResolver&) = delete;
    PBAliasResolver& operator=(const PBAliasResolver&) = delete;
    ~PBAliasResolver();

    void setLateAnswerHandler(LateAnswer handler) { _lateAnswer = std::move(handler); }
    void setMountFailureHandler(MountFailure handler) { _mountFailure = std::move(handler); }

    /// With `mount`, a volume that is absent is mounted in the background, which can take the time
    /// that the user needs to answer the desktop's questions. `otherRoots` are the places of the
    /// other roots, near which a moved folder may be.
    [[nodiscard]] platform::Resolution resolve(
        const PBAliasObject& aliasObject, bool mount, const QStringList& otherRoots,
        QString* error);

    /// Nothing if there is no folder, or it doesn't answer.
    [[nodiscard]] std::optional<NewAlias> newAlias(const QString& path);

    /// Whether there is a folder; also false if it doesn't answer.
    [[nodiscard]] bool isFolder(const QString& path);

    /// The path as its disk spells it; as given if the disk doesn't answer.
    [[nodiscard]] QString spelledAsOnDisk(const QString& path);

    /// The lane of bounded calls that stands for the root's volume.
    [[nodiscard]] static QString lane(const PBAliasObject& aliasObject);

private:
    using Work = std::function<platform::Resolution(std::chrono::milliseconds limit)>;

    void tell(qint64 aliasId, const platform::Resolution& resolution, const Work& work);
    void searchOn(qint64 aliasId, const Work& work);
    void mountVolume(const PBAliasObject& aliasObject, QString* error);

    platform::BoundedCalls& _calls;
    platform::VolumeMounter* const _mounter;
    const std::shared_ptr<const platform::BookmarkResolver> _resolver;
    const QStringList _commonFolders;
    LateAnswer _lateAnswer;
    MountFailure _mountFailure;
    std::stop_source _stop;
    /// Callbacks that come back when this object is gone find it empty.
    const std::shared_ptr<PBAliasResolver*> _self;
};
