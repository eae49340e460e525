#include "e2e/Desktop.h"

namespace e2e {

namespace {

constexpr int longestWait = 60'000; // milliseconds: the machine may be busy

QStringList at(QPoint point) {
    return {u"mousemove"_s, QString::number(point.x()), QString::number(point.y())};
}

QStringList with(const QString& modifier, const QStringList& action) {
    if (modifier.isEmpty()) return action;
    return QStringList{u"keydown"_s, modifier} + action + QStringList{u"keyup"_s, modifier};
}

} // namespace

Desktop::Desktop() {
    // The server takes the first display that is free and tells its number once it answers.
    _server.setStandardErrorFile(QProcess::nullDevice());
    _server.start(
        u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
                    u"%1x%2x24"_s.arg(screen.width()).arg(screen.height()), u"-nolisten"_s,
                    u"tcp"_s, u"-noreset"_s});
    while (!_server.canReadLine()) {
        if (!_server.waitForReadyRead(longestWait)) return;
    }
    _display = u':' + QString::fromLatin1(_server.readLine().trimmed());
    _windowManager.setProcessEnvironment(environment());
    _windowManager.setStandardErrorFile(QProcess::nullDevice());
    _windowManager.start(u"openbox"_s, {u"--startup"_s, u"true"_s});
    _isManaged = support::spinUntil(
        [this] { return failureOf({u"get_desktop"_s}).isNull(); },
        std::chrono::milliseconds(longestWait));
}

Desktop::~Desktop() {
    _windowManager.kill();
    _windowManager.waitForFinished(longestWait);
    _server.terminate();
    if (!_server.waitForFinished(longestWait)) _server.kill();
}

QProcessEnvironment Desktop::environment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, _display);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"QT_SCALE_FACTOR"_s, u"1"_s);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    for (const QString& foreign : support::words(
             "WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS QT_STYLE_OVERRIDE LANGUAGE"))
        environment.remove(foreign);
    if (!_bus.isEmpty()) environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, _bus);
    return environment;
}

QString Desktop::failureOf(const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(u"xdotool"_s, arguments);
    const bool done = process.waitForFinished(longestWait) && process.exitCode() == 0;
    return done ? QString() : arguments.join(u' ') + u": "_s + QString::fromUtf8(process.readAll());
}

void Desktop::click(QPoint point, const QString& modifier) {
    xdotool(at(point) + with(modifier, {u"click"_s, u"1"_s}));
}

void Desktop::doubleClick(QPoint point) {
    xdotool(
        at(point) + QStringList{u"click"_s, u"--repeat"_s, u"2"_s, u"--delay"_s, u"30"_s, u"1"_s});
}

void Desktop::wheel(QPoint point, int notches, const QString& modifier) {
    const QStringList turn{u"click"_s,   u"--repeat"_s, QString::number(std::abs(notches)),
                           u"--delay"_s, u"30"_s,       notches > 0 ? u"4"_s : u"5"_s};
    xdotool(at(point) + with(modifier, turn));
}

void Desktop::menu(QPoint point) {
    xdotool(at(point) + QStringList{u"click"_s, u"3"_s});
}

void Desktop::drag(QPoint from, QPoint to) {
    constexpr int steps = 8;
    QStringList way = at(from) + QStringList{u"mousedown"_s, u"1"_s};
    for (int step = 1; step <= steps; ++step)
        way += at(from + (to - from) * step / steps);
    xdotool(way);
}

} // namespace e2e
