#pragma once

#include "platform/tasks/Mutex.h"
#include "platform/volumes/BookmarkResolver.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

class PBAliasObject;

/// What the catalogue keeps of a root so that its folder is found again.
struct PBAliasBookmark {
    QByteArray data;        ///< of `platform::Bookmark`
    std::uint64_t type = 0; ///< `PBAliasObject::Type` of the volume
};

/// What became of a root's folder.
struct PBAliasResolution {
    using Outcome = platform::Resolution::Outcome;
    Outcome outcome = Outcome::NoAnswer;
    QString path = {}; ///< of a folder that was found
    /// By this the root is known from now on: the folder that was found is not the very one that
    /// was bookmarked, but has its photographs.
    std::optional<PBAliasBookmark> renewed = {};
};

/// How a root is looked for.
struct PBAliasLook {
    bool mount = false;          ///< its volume may be mounted for it; somebody waits for the root
    bool includeMounted = false; ///< also a root that is mounted
    bool updateReserve = false;  ///< a new place becomes the reserve path
    QString movedTo = {};        ///< where it was seen to go; empty where nobody saw it
};

/// What a folder root needs from outside.
class PBAliasServices {
public:
    virtual ~PBAliasServices() = default;
    /// Where the root's folder is now. With `look.mount`, `error`, if given, receives a sentence
    /// when it is known that the volume can't be mounted. Bounded in time.
    [[nodiscard]] virtual PBAliasResolution
    resolveAlias(const PBAliasObject& aliasObject, const PBAliasLook& look, QString* error) = 0;
    /// These are about to be resolved, one after the other: what their disks have to say can be
    /// asked of all at the same time.
    virtual void willResolve(std::span<const std::shared_ptr<PBAliasObject>> /*roots*/) {}
    /// Writes the reserve path to the catalogue.
    virtual bool storeReservePath(qint64 aliasId, const QString& reservePath) = 0;
    /// Writes bookmark and type to the catalogue.
    [[nodiscard]] virtual bool storeBookmark(qint64 aliasId, const PBAliasBookmark& bookmark) = 0;
};

/// A folder root: a folder that the user added to the sidebar, kept as a bookmark that survives
/// renames, moves and absent volumes.
///
/// Everything that changes is changed on the main thread; the accessors may be called from any.
class PBAliasObject {
public:
    enum Type : std::uint64_t { Local = 0, Network = 1, Removable = 2 };
    /// Bit of `state`: the user removed the root from the sidebar. Such a root is called a zombie.
    static constexpr std::uint64_t zombieState = 1;

    /// `url` is empty for a root that is not (yet) resolved.
    [[nodiscard]] static std::shared_ptr<PBAliasObject> aliasObjectWithId(
        qint64 aliasId, const QByteArray& data, const QUrl& url, const QString& reservePath,
        std::uint64_t state, std::uint64_t type);

    [[nodiscard]] qint64 aliasId() const { return _aliasId; }
    [[nodiscard]] QByteArray aliasData() const;
    [[nodiscard]] std::uint64_t type() const;

    [[nodiscard]] QString path() const;
    [[nodiscard]] bool isMounted() const { return !path().isEmpty(); }
    /// Where the root was last seen.
    [[nodiscard]] QString reservePath() const;
    /// Where it was last seen before this run, or was when it was added.
    [[nodiscard]] const QString& formerPath() const { return _formerPath; }
    [[nodiscard]] std::uint64_t state() const;
    void setState(std::uint64_t state);
    [[nodiscard]] bool isZombie() const { return (state() & zombieState) != 0; }

    /// Name of the folder, from its place or its reserve path; empty if neither is known.
    [[nodiscard]] QString displayName() const;

    /// Takes the present place of a mounted root that exists as its reserve path, in the catalogue
    /// too. False if it is that already.
    bool updateReservePath(PBAliasServices& services);

    using Look = PBAliasLook;
    /// Looks for the folder; answers whether its place changed (to another, from or to none).
    bool resolveWithMount(const Look& look, PBAliasServices& services, QString* error = nullptr);
    /// Takes over an answer that came later than `resolveWithMount` could wait. A renewed bookmark
    /// that the catalogue doesn't take leaves the root unmounted.
    bool takeResolution(
        const PBAliasResolution& resolution, bool updateReserve, PBAliasServices& services);

    /// The last look was at every folder of the root's volume, and its own is none of them. Only
    /// then may an unmounted root be taken for deleted.
    [[nodiscard]] bool isGone() const;

private:
    PBAliasObject(
        qint64 aliasId, QByteArray data, QString path, QString reservePath, std::uint64_t state,
        std::uint64_t type);

    const qint64 _aliasId;
    const QString _formerPath;

    mutable platform::Mutex _mutex;
    PBAliasBookmark _bookmark VELMORA_GUARDED_BY(_mutex);
    QString _path VELMORA_GUARDED_BY(_mutex); // where the folder is now; empty while unmounted
    QString _reservePath VELMORA_GUARDED_BY(_mutex);
    std::uint64_t _state VELMORA_GUARDED_BY(_mutex);
    bool _isGone VELMORA_GUARDED_BY(_mutex) = false;
};
