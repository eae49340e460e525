#include "library/PBPathHistory.h"

#include "platform/tasks/MainThread.h"

#include <utility>

void PBPathHistory::pushAliasObject(
    std::shared_ptr<PBAliasObject> aliasObject, const QString& relativePath) {
    platform::assertMainThread();
    if (_position >= 0) {
        const Place& here = _pathArray[static_cast<std::size_t>(_position)];
        if (here.aliasObject == aliasObject && here.relativePath == relativePath) return;
    }
    _pathArray.resize(static_cast<std::size_t>(_position + 1));
    _pathArray.push_back({std::move(aliasObject), relativePath});
    ++_position;
}

std::optional<PBPathHistory::Place> PBPathHistory::backPlace() const {
    if (!canBack()) return std::nullopt;
    return _pathArray[static_cast<std::size_t>(_position - 1)];
}

std::optional<PBPathHistory::Place> PBPathHistory::forwardPlace() const {
    if (!canForward()) return std::nullopt;
    return _pathArray[static_cast<std::size_t>(_position + 1)];
}

std::shared_ptr<PBAliasObject> PBPathHistory::back(QString* relativePath) {
    return canBack() ? stepTo(_position - 1, relativePath) : nullptr;
}

std::shared_ptr<PBAliasObject> PBPathHistory::forward(QString* relativePath) {
    return canForward() ? stepTo(_position + 1, relativePath) : nullptr;
}

std::shared_ptr<PBAliasObject> PBPathHistory::stepTo(std::int64_t position, QString* relativePath) {
    platform::assertMainThread();
    _position = position;
    const Place& entry = _pathArray[static_cast<std::size_t>(position)];
    if (relativePath) *relativePath = entry.relativePath;
    return entry.aliasObject;
}
