#include "app/SingleInstance.h"

#include "platform/files/PathNames.h"
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
#include <QPointer>
#include <QThread>

#include <algorithm>
#include <array>
#include <string_view>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

constexpr int longestWait = 5000;                        // milliseconds
constexpr int timeBetweenTries = 5;                      // milliseconds
constexpr int longestWork = 600'000;                     // milliseconds
constexpr qsizetype largestRequest = qsizetype(1) << 30; // bytes
constexpr int timeUntilTold = 2000;                      // milliseconds
const QByteArray accepted("ok");
/// In the lock's file while somebody has it for a moment.
constexpr std::string_view forAMoment = "moment";

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
    QCborArray faults;
    for (const UnopenedPath& unopened : request.faults)
        faults.append(QCborArray{static_cast<int>(unopened.fault), unopened.path, unopened.error});
    map.insert(QStringLiteral("faults"), faults);
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

std::vector<UnopenedPath> faultsOf(const QCborValue& value) {
    constexpr auto last = static_cast<qint64>(UnopenedPath::Fault::NotOfThisComputer);
    std::vector<UnopenedPath> faults;
    for (const QCborValue& one : value.toArray()) {
        const qint64 fault = one[0].toInteger(-1);
        if (fault < 0 || fault > last) continue;
        faults.push_back(
            {static_cast<UnopenedPath::Fault>(fault), one[1].toString(),
             static_cast<int>(one[2].toInteger())});
    }
    return faults;
}

/// The request, once it is there whole.
std::optional<SingleInstance::Request> decode(const QByteArray& bytes) {
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    if (error.error != QCborError::NoError || !value.isMap()) return std::nullopt;
    SingleInstance::Request request{
        stringsOf(value[QStringLiteral("paths")]), stringsOf(value[QStringLiteral("add")]),
        faultsOf(value[QStringLiteral("faults")]), value[QStringLiteral("state")].toBool(),
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

/// Whoever has the lock may not listen yet.
bool connectWithin(QLocalSocket& socket, const QString& name, int milliseconds) {
    const QDeadlineTimer deadline(milliseconds);
    socket.connectToServer(name);
    while (!socket.waitForConnected(longestWait)) {
        if (deadline.hasExpired()) return false;
        QThread::msleep(timeBetweenTries);
        socket.connectToServer(name);
    }
    return true;
}

} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::~SingleInstance() {
    _server.reset();
    if (_lock >= 0) ::close(_lock);
}

SingleInstance::Outcome SingleInstance::take(const QString& folder, const Request& request) {
    const QString socket = socketOf(folder);
    bool isTaken = lock(folder);
    while (!isTaken) {
        if (handOver(socket, request)) return Outcome::HandedOver;
        // Whoever has it for a moment may just have begun, or have ended since.
        const bool isHeld = isHeldForAMoment();
        isTaken = isHeld ? lock(folder) : tryLock(folder);
        if (!isTaken && !isHeld) return Outcome::NoAnswer;
    }
    if (_lock >= 0) static_cast<void>(::ftruncate(_lock, 0));
    _socket = socket;
    return Outcome::First;
}

bool SingleInstance::takeForAMoment(const QString& folder) {
    if (!lock(folder)) return false;
    static_cast<void>(::pwrite(_lock, forAMoment.data(), forAMoment.size(), 0));
    return true;
}

/// The word stays in the file when the lock is let go of: whoever takes it to listen removes it,
/// where the disk can be written.
bool SingleInstance::isHeldForAMoment() const {
    if ((::fcntl(_lock, F_GETFL) & O_ACCMODE) != O_RDWR) return false;
    std::array<char, forAMoment.size()> word{};
    const auto size = ::pread(_lock, word.data(), word.size(), 0);
    return size == static_cast<ssize_t>(word.size()) && std::ranges::equal(word, forAMoment);
}

bool SingleInstance::lock(const QString& folder) {
    QDeadlineTimer untilTold(timeUntilTold);
    const QDeadlineTimer deadline(longestWork);
    while (!tryLock(folder)) {
        if (!isHeldForAMoment() || deadline.hasExpired()) return false;
        if (untilTold.hasExpired()) {
            platform::complain(
                QStringLiteral("waiting for another Velmora that imports or exports marks"));
            untilTold = QDeadlineTimer(QDeadlineTimer::Forever);
        }
        QThread::msleep(timeBetweenTries);
    }
    return true;
}

bool SingleInstance::tryLock(const QString& folder) {
    if (_lock >= 0) ::close(_lock);
    const QByteArray file = QFile::encodeName(platform::pathInFolder(folder, u"lock"));
    _lock = ::open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (_lock < 0) _lock = ::open(file.constData(), O_RDONLY | O_CLOEXEC); // a read-only disk
    if (_lock < 0) return true; // what can't be written here is told when it is needed
    return ::flock(_lock, LOCK_EX | LOCK_NB) == 0;
}

bool SingleInstance::handOver(const QString& socketName, const Request& request) {
    QLocalSocket socket;
    if (!connectWithin(socket, socketName, longestWait)) return false;
    socket.write(encode(request));
    while (socket.bytesAvailable() < accepted.size()) {
        if (!socket.waitForReadyRead(longestWait)) return false;
    }
    return socket.readAll() == accepted;
}

std::optional<QByteArray> SingleInstance::stateOf(const QString& folder) {
    Request request;
    request.wantsState = true;
    return answerTo(folder, request, 0, longestWait);
}

std::optional<QByteArray> SingleInstance::ask(const QString& folder, const Request& request) {
    return answerTo(folder, request, longestWait, longestWork);
}

std::optional<QByteArray>
SingleInstance::answerTo(const QString& folder, const Request& request, int connectWait, int wait) {
    QLocalSocket socket;
    if (!connectWithin(socket, socketOf(folder), connectWait)) return std::nullopt;
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
    const auto reply = [asking = QPointer(&socket)](const QByteArray& said) {
        if (!asking) return;
        asking->write(said);
        asking->flush(); // the main loop may have ended
        asking->disconnectFromServer();
    };
    if (request.wantsState) return reply(_stateSource ? _stateSource() : QByteArray());
    if (request.wantsMarks) return _exportMarks ? _exportMarks(reply) : reply({});
    if (request.importMarks)
        return _importMarks ? _importMarks(*request.importMarks, reply) : reply({});
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
