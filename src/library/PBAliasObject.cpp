#include "library/PBAliasObject.h"

#include "core/Paths.h"
#include "platform/tasks/MainThread.h"

#include <QFileInfo>

#include <utility>

std::shared_ptr<PBAliasObject> PBAliasObject::aliasObjectWithId(
    qint64 aliasId, const QByteArray& data, const QUrl& url, const QString& reservePath,
    std::uint64_t state, std::uint64_t type) {
    // Not make_shared: the constructor is private.
    return std::shared_ptr<PBAliasObject>(
        new PBAliasObject(aliasId, data, url.toLocalFile(), reservePath, state, type));
}

PBAliasObject::PBAliasObject(
    qint64 aliasId, QByteArray data, QString path, QString reservePath, std::uint64_t state,
    std::uint64_t type)
    : _aliasId(aliasId), _formerPath(reservePath), _bookmark{std::move(data), type},
      _path(std::move(path)), _reservePath(std::move(reservePath)), _state(state) {}

QByteArray PBAliasObject::aliasData() const {
    const platform::Lock lock(_mutex);
    return _bookmark.data;
}

std::uint64_t PBAliasObject::type() const {
    const platform::Lock lock(_mutex);
    return _bookmark.type;
}

QString PBAliasObject::path() const {
    const platform::Lock lock(_mutex);
    return _path;
}

QString PBAliasObject::reservePath() const {
    const platform::Lock lock(_mutex);
    return _reservePath;
}

std::uint64_t PBAliasObject::state() const {
    const platform::Lock lock(_mutex);
    return _state;
}

void PBAliasObject::setState(std::uint64_t state) {
    platform::assertMainThread();
    const platform::Lock lock(_mutex);
    _state = state;
}

bool PBAliasObject::isGone() const {
    const platform::Lock lock(_mutex);
    return _isGone;
}

QString PBAliasObject::displayName() const {
    const QString place = path();
    return PBUtilities::displayNameOfPath(place.isEmpty() ? reservePath() : place);
}

bool PBAliasObject::updateReservePath(PBAliasServices& services) {
    platform::assertMainThread();
    QString place = path();
    if (place.isEmpty()) return false;
    const QString reserve = reservePath();
    if (reserve == place) return false;
    services.storeReservePath(_aliasId, place);
    const platform::Lock lock(_mutex);
    _reservePath.swap(place);
    return true;
}

bool PBAliasObject::resolveWithMount(const Look& look, PBAliasServices& services, QString* error) {
    if (error) error->clear();
    if (!look.includeMounted && isMounted()) return false;
    return takeResolution(services.resolveAlias(*this, look, error), look.updateReserve, services);
}

bool PBAliasObject::takeResolution(
    const PBAliasResolution& resolution, bool updateReserve, PBAliasServices& services) {
    platform::assertMainThread();
    using Outcome = PBAliasResolution::Outcome;
    const QString root = QStringLiteral("/");
    // What is left of a vanished volume may look like the root of the file system.
    const bool isStray = resolution.path == root && reservePath() != root;
    QString place = resolution.outcome == Outcome::Found && !isStray ? resolution.path : QString();
    if (!place.isEmpty() && resolution.renewed) {
        // A root that is told by its former bookmark again would be away at the next look.
        if (services.storeBookmark(_aliasId, *resolution.renewed)) {
            const platform::Lock lock(_mutex);
            _bookmark = *resolution.renewed;
        } else {
            place.clear();
        }
    }
    bool changed = false;
    {
        const platform::Lock lock(_mutex);
        _isGone = resolution.outcome == Outcome::Gone;
        // In case only, too: where that makes a difference, nothing is at the former path any more.
        changed = _path != place;
        if (changed) _path.swap(place);
    }
    if (changed && updateReserve) updateReservePath(services);
    return changed;
}
