#include "library/PBAliasResolver.h"

#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "platform/files/Spelling.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <utility>

using platform::Bookmark;
using platform::BookmarkResolver;
using Outcome = PBAliasResolution::Outcome;

namespace {

/// A search may take its whole time; the rest is for the threads.
constexpr std::chrono::milliseconds resolveLimit =
    BookmarkResolver::timeLimit + std::chrono::milliseconds(50);
/// The user has just chosen the folder and waits for it.
constexpr std::chrono::milliseconds newAliasLimit{3000};
constexpr std::chrono::milliseconds noTime{0};
/// For the photographs of one folder, when nobody waits any more.
constexpr std::chrono::milliseconds recognitionLimit{5000};

/// By what a whole volume is searched for the root; empty for one that is for this run only: no
/// disk is walked for a photograph that was opened.
QByteArray searchedBy(const PBAliasObject& aliasObject) {
    return OpenedRoots::isOpened(aliasObject) ? QByteArray() : aliasObject.aliasData();
}

QString jobName(qint64 aliasId) {
    return QStringLiteral("resolve %1").arg(aliasId);
}

PBAliasBookmark keptOf(const Bookmark& bookmark, const platform::Volumes& volumes) {
    return {
        bookmark.data(), PBUtilities::aliasTypeOfVolume(volumes.propertiesOfPath(bookmark.path))};
}

} // namespace

/// What is asked of a disk about one root; owns all that it uses.
struct PBAliasResolver::Question {
    std::shared_ptr<const BookmarkResolver> resolver;
    qint64 aliasId = 0;
    QByteArray data;
    platform::SearchPlaces places;
    QStringList mountedRoots;
    NamesSource names;
    std::stop_token stop;

    [[nodiscard]] PBAliasResolution answer(std::chrono::milliseconds limit, bool isLast) const {
        const auto bookmark = Bookmark::fromData(data);
        if (!bookmark) {
            // Damaged bytes: all that is known is where the folder was seen.
            if (!PBUtilities::isFolder(places.lastSeenPath)) return {};
            return {.outcome = Outcome::Found, .path = places.lastSeenPath};
        }
        const auto [outcome, path] = resolver->resolve(*bookmark, places, limit, stop);
        if (outcome == Outcome::Found)
            return {.outcome = outcome, .path = platform::spelledAsOnDisk(path)};
        QStringList former{bookmark->path, places.lastSeenPath};
        former.removeDuplicates();
        bool isDecided = true;
        for (const QString& place : former) {
            // A root that is there already is no other one.
            if (mountedRoots.contains(place) || !PBUtilities::isFolder(place)) continue;
            const Recognition recognition = recognise(place);
            if (recognition == Recognition::Undecided) isDecided = false;
            if (recognition != Recognition::Same) continue;
            const auto now = Bookmark::bookmarkOfFolder(place, resolver->volumes());
            if (!now) continue;
            return {Outcome::Found, place, keptOf(*now, resolver->volumes())};
        }
        return {.outcome = isLast && !isDecided ? Outcome::NoAnswer : outcome};
    }

    [[nodiscard]] Recognition recognise(const QString& folder) const {
        const auto known = names ? names(aliasId) : std::vector<CataloguedName>();
        if (!known) return Recognition::Undecided;
        // Of a root without photographs there is nothing to know it by.
        if (known->empty()) return Recognition::Other;
        const auto end = std::chrono::steady_clock::now() + recognitionLimit;
        return recogniseFolder(folder, *known, [&] {
            return stop.stop_requested() || std::chrono::steady_clock::now() >= end;
        });
    }
};

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
      _search([this](qint64 aliasId, const PBAliasResolution& resolution) {
          // Answers to questions from before know less.
          if (resolution.outcome == Outcome::Found) forgetQuestions(aliasId);
          tell(aliasId, resolution);
      }),
      _self(std::make_shared<PBAliasResolver*>(this)) {}

PBAliasResolver::~PBAliasResolver() {
    _stop.request_stop();
}

QString PBAliasResolver::lane(const PBAliasObject& aliasObject) {
    const auto bookmark = Bookmark::fromData(aliasObject.aliasData());
    if (!bookmark) return aliasObject.reservePath();
    return QString::fromUtf8(bookmark->fileSystem.type + ' ' + bookmark->fileSystem.source);
}

PBAliasResolver::Work PBAliasResolver::workFor(
    const PBAliasObject& aliasObject, const QString& movedTo, const OtherRoots& otherRoots) const {
    Question question{
        .resolver = _resolver,
        .aliasId = aliasObject.aliasId(),
        .data = aliasObject.aliasData(),
        .places =
            {aliasObject.reservePath(), movedTo, otherRoots.mounted + otherRoots.away,
             _commonFolders},
        .mountedRoots = otherRoots.mounted,
        .names = _names,
        .stop = _stop.get_token()};
    return [question = std::move(question)](std::chrono::milliseconds limit, bool isLast) {
        return question.answer(limit, isLast);
    };
}

void PBAliasResolver::beginToResolve(
    const PBAliasObject& aliasObject, const OtherRoots& otherRoots) {
    platform::assertMainThread();
    const qint64 aliasId = aliasObject.aliasId();
    Begun begun{
        .call = {},
        .work = workFor(aliasObject, {}, otherRoots),
        .late = {},
        .data = aliasObject.aliasData()};
    begun.late = lateAnswer(aliasObject, begun.work, false);
    begun.call = _calls.begin<PBAliasResolution>(
        lane(aliasObject), jobName(aliasId),
        [work = begun.work] { return work(BookmarkResolver::timeLimit, false); },
        [late = begun.late, aliasId](const PBAliasResolution& resolution) {
            late(aliasId, resolution);
        });
    _begunUntil = _calls.deadline(BookmarkResolver::timeLimit);
    _begun.insert_or_assign(aliasId, std::move(begun));
}

std::optional<PBAliasResolver::Begun>
PBAliasResolver::takeBegun(const PBAliasObject& aliasObject, const PBAliasLook& look) {
    auto node = _begun.extract(aliasObject.aliasId());
    const bool isTheQuestion = !node.empty() && !look.mount && look.movedTo.isEmpty() &&
                               node.mapped().data == aliasObject.aliasData();
    if (!isTheQuestion) return std::nullopt;
    return std::move(node.mapped());
}

PBAliasResolution PBAliasResolver::resolve(
    const PBAliasObject& aliasObject, const PBAliasLook& look, const OtherRoots& otherRoots,
    QString* error) {
    platform::assertMainThread();
    if (const auto begun = takeBegun(aliasObject, look)) {
        const auto answer = _calls.take(begun->call, _begunUntil);
        if (!answer) return {};
        // Of two roots that were asked about together the second one can't be at the same place.
        if (!otherRoots.mounted.contains(answer->path)) {
            conclude(aliasObject.aliasId(), begun->data, begun->work, answer->outcome, look.mount);
            return *answer;
        }
    }
    const Work work = workFor(aliasObject, look.movedTo, otherRoots);
    const LateAnswer late = lateAnswer(aliasObject, work, look.mount);
    const auto answer = ask(
        aliasObject, lane(aliasObject), [work] { return work(BookmarkResolver::timeLimit, false); },
        resolveLimit, late);
    if (!answer) return {};
    conclude(aliasObject.aliasId(), searchedBy(aliasObject), work, answer->outcome, look.mount);
    if (look.mount && answer->outcome == Outcome::VolumeAbsent) mountVolume(aliasObject, error);
    return *answer;
}

void PBAliasResolver::resolveLater(const PBAliasObject& aliasObject, const OtherRoots& otherRoots) {
    platform::assertMainThread();
    const Work work = workFor(aliasObject, {}, otherRoots);
    const LateAnswer late = lateAnswer(aliasObject, work, false);
    // In a lane of its own: those that are waited for would count as late. What is awaited comes to
    // its place, around which nothing is searched each time that something happens there.
    const auto answer = ask(
        aliasObject, QStringLiteral("later ") + lane(aliasObject),
        [work] { return work(noTime, false); }, noTime, late);
    // Nobody expects it within the call.
    if (!answer) return;
    platform::MainLoop::instance()->post(
        platform::MainLoop::Mode::Common,
        [late, aliasId = aliasObject.aliasId(), answer] { late(aliasId, *answer); });
}

std::optional<PBAliasResolution> PBAliasResolver::ask(
    const PBAliasObject& aliasObject, const QString& lane, std::function<PBAliasResolution()> look,
    std::chrono::milliseconds limit, const LateAnswer& late) {
    return _calls.call<PBAliasResolution>(
        lane, jobName(aliasObject.aliasId()), limit, std::move(look),
        [late, aliasId = aliasObject.aliasId()](const PBAliasResolution& resolution) {
            late(aliasId, resolution);
        });
}

/// Of the next question about the root, unless there is a later one by then.
PBAliasResolver::LateAnswer
PBAliasResolver::lateAnswer(const PBAliasObject& aliasObject, const Work& work, bool again) {
    return [self = std::weak_ptr(_self), data = searchedBy(aliasObject), work, again,
            number = ++_questions[aliasObject.aliasId()]](
               qint64 aliasId, const PBAliasResolution& resolution) {
        const auto alive = self.lock();
        if (!alive || (*alive)->_questions[aliasId] != number) return;
        (*alive)->conclude(aliasId, data, work, resolution.outcome, again);
        (*alive)->tell(aliasId, resolution);
    };
}

void PBAliasResolver::conclude(
    qint64 aliasId, const QByteArray& data, const Work& work, Outcome outcome, bool again) {
    if (outcome == Outcome::Found) _search.forget(aliasId);
    const auto bookmark = Bookmark::fromData(data);
    if (outcome != Outcome::NotFound || !bookmark) return;
    _search.find(
        aliasId, *bookmark, [work] { return work(BookmarkResolver::timeLimit, true); }, again);
}

void PBAliasResolver::forgetQuestions(qint64 aliasId) {
    platform::assertMainThread();
    ++_questions[aliasId];
    _search.forget(aliasId);
}

void PBAliasResolver::tell(qint64 aliasId, const PBAliasResolution& resolution) const {
    if (_lateAnswer) _lateAnswer(aliasId, resolution);
}

void PBAliasResolver::mountVolume(const PBAliasObject& aliasObject, QString* error) {
    const auto bookmark = Bookmark::fromData(aliasObject.aliasData());
    const bool canTry = _mounter && bookmark && _mounter->canMount(bookmark->fileSystem);
    if (!canTry) {
        const bool isOnServer = bookmark && aliasObject.type() == PBAliasObject::Network;
        if (error)
            *error = isOnServer ? platform::localizedFormat(
                                      u"ServerNotMounted",
                                      {QString::fromUtf8(bookmark->fileSystem.source)})
                                : platform::localizedString(u"VolumeNotConnected");
        return;
    }
    const std::weak_ptr<PBAliasResolver*> self = _self;
    const qint64 aliasId = aliasObject.aliasId();
    _mounter->mount(bookmark->fileSystem, [self, aliasId](const QString& problem) {
        const auto alive = self.lock();
        if (alive && (*alive)->_didMount) (*alive)->_didMount(aliasId, problem);
    });
}

bool PBAliasResolver::isFolder(const QString& path) {
    platform::assertMainThread();
    return _calls
        .call<bool>(
            // One wait for all paths of a folder that does not answer.
            QStringLiteral("look ") + path.section(u'/', 0, -2), path, resolveLimit,
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

std::optional<PBAliasBookmark> PBAliasResolver::newAlias(const QString& path) {
    platform::assertMainThread();
    using Answer = std::optional<PBAliasBookmark>;
    const auto work = [resolver = _resolver, path]() -> Answer {
        const auto bookmark = Bookmark::bookmarkOfFolder(path, resolver->volumes());
        if (!bookmark) return std::nullopt;
        return keptOf(*bookmark, resolver->volumes());
    };
    return _calls.call<Answer>(QStringLiteral("new ") + path, path, newAliasLimit, work, {})
        .value_or(std::nullopt);
}

std::optional<PBAliasResolver::Likeness>
PBAliasResolver::likeness(const PBAliasObject& aliasObject, const QString& path) {
    platform::assertMainThread();
    using Answer = std::optional<Likeness>;
    Question question{
        .resolver = _resolver,
        .aliasId = aliasObject.aliasId(),
        .data = aliasObject.aliasData(),
        .places = {},
        .mountedRoots = {},
        .names = _names,
        .stop = _stop.get_token()};
    const auto work = [question = std::move(question), path]() -> Answer {
        const auto chosen = Bookmark::bookmarkOfFolder(path, question.resolver->volumes());
        if (!chosen) return std::nullopt;
        const auto former = Bookmark::fromData(question.data);
        const bool isSame = former && former->isSameFolder(*chosen, former->path == path);
        return Likeness{
            keptOf(*chosen, question.resolver->volumes()),
            isSame || question.recognise(path) == Recognition::Same};
    };
    return _calls.call<Answer>(QStringLiteral("like ") + path, path, newAliasLimit, work, {})
        .value_or(std::nullopt);
}
