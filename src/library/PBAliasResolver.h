#pragma once

#include "library/PBAliasObject.h"
#include "library/RootRecognition.h"
#include "library/RootSearch.h"
#include "platform/tasks/BoundedCalls.h"
#include "platform/volumes/BookmarkResolver.h"
#include "platform/volumes/VolumeMounter.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>

namespace PBUtilities {

/// The type of a folder root on such a volume: 1 if it is not local, else 2 if it is ejectable,
/// removable or not internal, else 0.
[[nodiscard]] std::uint64_t aliasTypeOfVolume(const platform::VolumeProperties& properties);

} // namespace PBUtilities

/// Resolves folder roots by their bookmarks without ever waiting long: what a disk does not answer
/// in time counts as unanswered, and is told when it comes. Where the very folder is not found, one
/// at its place with its photographs is taken for it. A root that is not found near where it was is
/// looked for on the whole disk, in the background. Main thread.
class PBAliasResolver {
public:
    /// A root's answer that came late, or after its volume was mounted for it.
    using LateAnswer = std::function<void(qint64 aliasId, const PBAliasResolution& resolution)>;
    /// A volume was mounted when asked for; else with the reason.
    using DidMount = std::function<void(qint64 aliasId, const QString& error)>;
    /// What the catalogue knows of a root's photographs; nothing where it can't be read. Called on
    /// any thread.
    using NamesSource = std::function<std::optional<std::vector<CataloguedName>>(qint64 aliasId)>;

    /// `calls` and `mounter` outlive this object; `mounter` may be empty: nothing can be mounted.
    PBAliasResolver(
        platform::BoundedCalls& calls, platform::VolumeMounter* mounter,
        platform::VolumeSources sources = {}, platform::BookmarkResolver::Clock clock = {});
    PBAliasResolver(const PBAliasResolver&) = delete;
    PBAliasResolver& operator=(const PBAliasResolver&) = delete;
    ~PBAliasResolver();

    void setLateAnswerHandler(LateAnswer handler) { _lateAnswer = std::move(handler); }
    void setMountHandler(DidMount handler) { _didMount = std::move(handler); }
    /// Without one, folders are known again by what the file system says of them alone.
    void setNamesSource(NamesSource source) { _names = std::move(source); }

    /// Where the other roots are: near these a moved folder may be, but none of them can be it.
    struct OtherRoots {
        QStringList mounted;
        QStringList away; ///< where they were last seen
    };
    /// Begins to ask about a root that is resolved after others: all that were begun since the last
    /// `resolve` are waited for no longer than one, together.
    void beginToResolve(const PBAliasObject& aliasObject, const OtherRoots& otherRoots);
    /// With `look.mount`, a volume that is absent is mounted in the background, which can take the
    /// time that the user needs to answer the desktop's questions.
    [[nodiscard]] PBAliasResolution resolve(
        const PBAliasObject& aliasObject, const PBAliasLook& look, const OtherRoots& otherRoots,
        QString* error);
    /// The same without waiting at all, and at the places only where it was: the answer comes late.
    void resolveLater(const PBAliasObject& aliasObject, const OtherRoots& otherRoots);
    /// It is known where the root is: answers that are still to come are void.
    void forgetQuestions(qint64 aliasId);

    /// Nothing if there is no folder, or it doesn't answer.
    [[nodiscard]] std::optional<PBAliasBookmark> newAlias(const QString& path);

    /// Whether a folder that was chosen is that of the root: itself, or by its photographs.
    struct Likeness {
        PBAliasBookmark bookmark; ///< of the folder
        bool isRoot = false;
    };
    /// Nothing if there is no folder, or it doesn't answer.
    [[nodiscard]] std::optional<Likeness>
    likeness(const PBAliasObject& aliasObject, const QString& path);

    /// Whether there is a folder; also false if it doesn't answer.
    [[nodiscard]] bool isFolder(const QString& path);

    /// The path as its disk spells it; as given if the disk doesn't answer.
    [[nodiscard]] QString spelledAsOnDisk(const QString& path);

    /// The lane of bounded calls that stands for the root's volume.
    [[nodiscard]] static QString lane(const PBAliasObject& aliasObject);

private:
    /// With `isLast`, what can't be decided is no answer, rather than a folder to be searched for.
    using Work = std::function<PBAliasResolution(std::chrono::milliseconds limit, bool isLast)>;
    struct Question;
    /// An answer that was asked for before it is wanted.
    struct Begun {
        platform::BoundedCalls::Begun<PBAliasResolution> call;
        Work work;
        LateAnswer late;
        QByteArray data; ///< of the root when it was asked
    };

    [[nodiscard]] Work workFor(
        const PBAliasObject& aliasObject, const QString& movedTo,
        const OtherRoots& otherRoots) const;
    [[nodiscard]] std::optional<PBAliasResolution>
    ask(const PBAliasObject& aliasObject, const QString& lane,
        std::function<PBAliasResolution()> look, std::chrono::milliseconds limit,
        const LateAnswer& late);
    /// Nothing where it was not begun, or for other circumstances.
    [[nodiscard]] std::optional<Begun>
    takeBegun(const PBAliasObject& aliasObject, const PBAliasLook& look);
    /// `again`: see `RootSearch`.
    [[nodiscard]] LateAnswer
    lateAnswer(const PBAliasObject& aliasObject, const Work& work, bool again);
    /// Begins or ends the search of the whole disk, as follows from an answer.
    void conclude(
        qint64 aliasId, const QByteArray& data, const Work& work,
        PBAliasResolution::Outcome outcome, bool again);
    void tell(qint64 aliasId, const PBAliasResolution& resolution) const;
    void mountVolume(const PBAliasObject& aliasObject, QString* error);

    platform::BoundedCalls& _calls;
    platform::VolumeMounter* const _mounter;
    const std::shared_ptr<const platform::BookmarkResolver> _resolver;
    const QStringList _commonFolders;
    LateAnswer _lateAnswer;
    DidMount _didMount;
    NamesSource _names;
    /// The number of the last question about each root: late answers to former ones are void.
    std::map<qint64, int> _questions;
    std::map<qint64, Begun> _begun;
    platform::BoundedCalls::Deadline _begunUntil;
    std::stop_source _stop;
    RootSearch _search;
    /// Callbacks that come back when this object is gone find it empty.
    const std::shared_ptr<PBAliasResolver*> _self;
};
