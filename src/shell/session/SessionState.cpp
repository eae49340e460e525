#include "shell/session/SessionState.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

/// Far more than a selection of everything in a large collection takes.
constexpr qint64 largestFile = qint64{64} << 20; // bytes

const QString folderKey = QStringLiteral("folder");
const QString catalogueKey = QStringLiteral("catalogue");
const QString viewKey = QStringLiteral("view");
const QString listKey = QStringLiteral("list");
const QString selectedKey = QStringLiteral("selected");
const QString currentKey = QStringLiteral("current");
const QString anchorKey = QStringLiteral("anchor");
const QString offsetKey = QStringLiteral("offset");
const QString endedKey = QStringLiteral("ended");
const QString crashesKey = QStringLiteral("crashes");
const QString large = QStringLiteral("large");
const QString chosen = QStringLiteral("selected");

QJsonValue json(const SessionState::Photograph& photograph) {
    if (photograph.path.isEmpty()) return photograph.fileId;
    return QJsonArray{photograph.fileId, photograph.path};
}

SessionState::Photograph photographOf(const QJsonValue& value) {
    if (!value.isArray()) return {value.toInteger(), {}};
    return {value[0].toInteger(), value[1].toString()};
}

} // namespace

QByteArray SessionState::toJson() const {
    QJsonArray all;
    for (const Photograph& photograph : selected)
        all.append(json(photograph));
    const QJsonObject object{
        {folderKey, folder},
        {catalogueKey, catalogue},
        {viewKey, isLargeView ? large : QStringLiteral("browser")},
        {listKey, isListSelected ? chosen : QStringLiteral("group")},
        {selectedKey, all},
        {currentKey, json(current)},
        {anchorKey, json(anchor)},
        {offsetKey, anchorOffset},
        {endedKey, hasEnded},
        {crashesKey, crashes}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<SessionState> SessionState::fromJson(const QByteArray& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject()) return std::nullopt;
    SessionState state;
    state.folder = document[folderKey].toString();
    state.catalogue = document[catalogueKey].toInteger();
    state.isLargeView = document[viewKey] == large;
    state.isListSelected = document[listKey] == chosen;
    for (const QJsonValue& value : document[selectedKey].toArray())
        state.selected.push_back(photographOf(value));
    state.current = photographOf(document[currentKey]);
    state.anchor = photographOf(document[anchorKey]);
    state.anchorOffset = document[offsetKey].toDouble();
    state.hasEnded = document[endedKey].toBool();
    state.crashes = document[crashesKey].toInt();
    return state;
}

std::optional<SessionState> SessionState::read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return std::nullopt;
    return fromJson(file.readAll());
}

bool SessionState::write(const QString& path) const {
    const QString unfinished = path + QStringLiteral(".new");
    QFile file(unfinished);
    const QByteArray text = toJson();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) return false;
    file.close();
    return file.error() == QFileDevice::NoError &&
           std::rename(QFile::encodeName(unfinished), QFile::encodeName(path)) == 0;
}
