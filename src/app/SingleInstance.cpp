#include "app/SingleInstance.h"

#include "platform/program/RuntimeFolder.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainThread.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

constexpr int longestWait = 5000;                        // milliseconds
constexpr int timeBetweenTries = 5;                      // milliseconds
constexpr int longestWork = 600'000;                     // milliseconds
constexpr qsizetype largestRequest = qsizetype(1) << 30; // bytes
const QByteArray accepted("ok");

/// A socket's path may have 107 bytes only, so it is named by a hash of the folder's real path.
QString socketOf(const QString& folder) {
    const QString place = QFile::decodeName(platform::RuntimeFolder::path());
    const QString real = QFileInfo(folder).canonicalFilePath();
    const QByteArray hash =
        QCryptographicHash::hash(real.toUtf8(), QCryptographicHash::Sha256).toHex().left(24);
    return QStringLiteral("%1/velmora-%2-%3")
        .arg(place)
        .arg(::getuid())
        .arg(QLatin1StringView(hash));
}

QByteArray encode(const SingleInstance::Request& request) {
    QCborMap map;
    map.insert(QStringLiteral("paths"), QCborArray::fromStringList(request.paths));
    map.insert(QStringLiteral("add"), QCborArray::fromStringList(request.add));
    map.insert(QStringLiteral("faults"), QCborArray::fromStringList(request.faults));
    map.insert(QStringLiteral("state"), request.wantsState);
    map.insert(QStringLiteral("marks"), request.wantsMarks);
    if (request.importMarks) map.insert(QStringLiteral("import"), *request.importMarks);
    map.insert(QStringLiteral("fullScreen"), request.isFullScreen);
    map.insert(QStringLiteral("slideshow"), request.isSlideshow);
    map.insert(QStringLiteral("startupId"), request.activation.startupId);
    map.insert(QStringLiteral("token"), request.activation.token);
    return QCborValue(map).toCbor();
}

QStringList stringsOf(const QCborValue& value) {
    QStringList strings;
    for (const QCborValue& one : value.toArray()) {
        if (one.isString()) strings.append(one.toString());
    }
    return strings;
}

/// The request, once it is there whole.
std::optional<SingleInstance::Request> decode(const QByteArray& bytes) {
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    if (error.error != QCborError::NoError || !value.isMap()) return std::nullopt;
    SingleInstance::Request request{
        stringsOf(value[QStringLiteral("paths")]), stringsOf(value[QStringLiteral("add")]),
        stringsOf(value[QStringLiteral("faults")]), value[QStringLiteral("state")].toBool(),
        value[QStringLiteral("marks")].toBool()};
    const QCborValue lines = value[QStringLiteral("import")];
    if (lines.isByteArray()) request.importMarks = lines.toByteArray();
    request.isFullScreen = value[QStringLiteral("fullScreen")].toBool();
    request.isSlideshow = value[QStringLiteral("slideshow")].toBool();
    request.activation = {
        value[QStringLiteral("startupId")].toByteArray(),
        value[QStringLiteral("token")].toByteArray()};
    return request;
}

} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::~SingleInstance() {
    _server.reset();
    if (_lock >= 0) ::close(_lock);
}

SingleInstance::Outcome SingleInstance::take(const QString& folder, const Request& request) {
    const QString socket = socketOf(folder);
    if (!lock(folder)) {
        return handOver(socket, request) ? Outcome::HandedOver : Outcome::NoAnswer;
    }
    _socket = socket;
    return Outcome::First;
}

bool SingleInstance::lock(const QString& folder) {
    const QByteArray file = QFile::encodeName(folder + QStringLiteral("/lock"));
    _lock = ::open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (_lock < 0) _lock = ::open(file.constData(), O_RDONLY | O_CLOEXEC); // a read-only disk
    if (_lock < 0) return true; // what can't be written here is told when it is needed
    return ::flock(_lock, LOCK_EX | LOCK_NB) == 0;
}

bool SingleInstance::handOver(const QString& socketName, const Request& request) {
    QLocalSocket socket;
    QDeadlineTimer deadline(longestWait);
    socket.connectToServer(socketName);
    while (!socket.waitForConnected(longestWait)) {
        // The first has the lock and does not listen yet.
        if (deadline.hasExpired()) return false;
        QThread::msleep(timeBetweenTries);
        socket.connectToServer(socketName);
    }
    socket.write(encode(request));
    while (socket.bytesAvailable() < accepted.size()) {
        if (!socket.waitForReadyRead(longestWait)) return false;
    }
    return socket.readAll() == accepted;
}

std::optional<QByteArray> SingleInstance::stateOf(const QString& folder) {
    Request request;
    request.wantsState = true;
    return answerTo(folder, request, longestWait);
}

std::optional<QByteArray> SingleInstance::ask(const QString& folder, const Request& request) {
    return answerTo(folder, request, longestWork);
}

std::optional<QByteArray>
SingleInstance::answerTo(const QString& folder, const Request& request, int wait) {
    QLocalSocket socket;
    socket.connectToServer(socketOf(folder));
    if (!socket.waitForConnected(longestWait)) return std::nullopt;
    socket.write(encode(request));
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(wait)) return std::nullopt;
    }
    // The answer ends with the connection.
    while (socket.state() == QLocalSocket::ConnectedState) {
        if (!socket.waitForReadyRead(wait) && socket.state() == QLocalSocket::ConnectedState) {
            return std::nullopt;
        }
    }
    const QByteArray said = socket.readAll();
    return said.isEmpty() ? std::nullopt : std::optional(said);
}

void SingleInstance::answer(QLocalSocket& socket, const Request& request) {
    platform::assertMainThread();
    std::optional<QByteArray> said;
    if (request.wantsState) said = _stateSource ? _stateSource() : QByteArray();
    if (request.wantsMarks) said = _exportMarks ? _exportMarks() : QByteArray();
    if (request.importMarks)
        said = _importMarks ? _importMarks(*request.importMarks) : QByteArray();
    if (said) {
        socket.write(*said);
        socket.disconnectFromServer();
        return;
    }
    socket.write(accepted);
    socket.flush();
    Q_EMIT requested(request);
}

void SingleInstance::listen() {
    platform::assertMainThread();
    // Whoever left a socket behind is gone: this process has the lock.
    QLocalServer::removeServer(_socket);
    _server = std::make_unique<QLocalServer>();
    _server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!_server->listen(_socket)) {
        platform::complain(
            QStringLiteral("later starts can't reach this one (%1)").arg(_server->errorString()));
        return;
    }
    connect(_server.get(), &QLocalServer::newConnection, this, &SingleInstance::accept);
}

void SingleInstance::accept() {
    while (QLocalSocket* socket = _server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            const QByteArray bytes =
                socket->peek(std::min(largestRequest, socket->bytesAvailable()));
            const auto request = decode(bytes);
            if (request) {
                socket->readAll();
                answer(*socket, *request);
            } else if (bytes.size() >= largestRequest) {
                socket->abort();
            }
        });
    }
}
