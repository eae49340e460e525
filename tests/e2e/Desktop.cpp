#include "e2e/Desktop.h"

#include "support/Support.h"

#include <QStandardPaths>

#include <gtest/gtest.h>

namespace e2e {

namespace {

constexpr int longestWait = 60'000; // milliseconds: the machine may be busy

QStringList at(QPoint point) {
    return {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())};
}

QStringList held(const QString& action, const QStringList& modifiers) {
    QStringList arguments;
    for (const QString& modifier : modifiers)
        arguments += {action, modifier};
    return arguments;
}

QStringList button(const QString& action, int number) {
    return {action, QString::number(number)};
}

} // namespace

bool Desktop::isInstalled() {
    return !QStandardPaths::findExecutable(QStringLiteral("Xvfb")).isEmpty() &&
           !QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty();
}

Desktop::Desktop() {
    // The server takes the first display that is free and tells its number once it answers.
    _server.setStandardErrorFile(QProcess::nullDevice());
    _server.start(
        QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
         QStringLiteral("0"), QStringLiteral("%1x%2x24").arg(screen.width()).arg(screen.height()),
         QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset")});
    while (!_server.canReadLine()) {
        if (!_server.waitForReadyRead(longestWait)) return;
    }
    _display = u':' + QString::fromLatin1(_server.readLine().trimmed());
}

bool Desktop::startWindowManager() {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("openbox"));
    if (program.isEmpty()) return false;
    _windowManager.setProcessEnvironment(environment());
    _windowManager.setStandardErrorFile(QProcess::nullDevice());
    _windowManager.start(program, {QStringLiteral("--startup"), QStringLiteral("true")});
    const auto manages = [this] {
        QProcess question;
        question.setProcessEnvironment(environment());
        question.start(QStringLiteral("xdotool"), {QStringLiteral("get_desktop")});
        return question.waitForFinished(longestWait) && question.exitCode() == 0;
    };
    return support::spinUntil(manages, std::chrono::milliseconds(longestWait));
}

Desktop::~Desktop() {
    _windowManager.kill();
    _windowManager.waitForFinished(longestWait);
    _server.terminate();
    if (!_server.waitForFinished(longestWait)) _server.kill();
}

QProcessEnvironment Desktop::environment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), _display);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("1"));
    for (const char* foreign :
         {"WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "QT_STYLE_OVERRIDE"})
        environment.remove(QString::fromLatin1(foreign));
    return environment;
}

void Desktop::xdotool(const QStringList& arguments) {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("xdotool"), arguments);
    const bool done = process.waitForFinished(longestWait) && process.exitCode() == 0;
    EXPECT_TRUE(done) << arguments.join(u' ').toStdString() << ": "
                      << process.readAll().toStdString();
}

void Desktop::move(QPoint point) {
    xdotool(at(point));
}

void Desktop::press(int number) {
    xdotool(button(QStringLiteral("mousedown"), number));
}

void Desktop::release(int number) {
    xdotool(button(QStringLiteral("mouseup"), number));
}

void Desktop::click(QPoint point, const QStringList& modifiers, int number) {
    xdotool(
        at(point) + held(QStringLiteral("keydown"), modifiers) +
        button(QStringLiteral("click"), number) + held(QStringLiteral("keyup"), modifiers));
}

void Desktop::doubleClick(QPoint point) {
    xdotool(
        at(point) + QStringList{
                        QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                        QStringLiteral("--delay"), QStringLiteral("20"), QStringLiteral("1")});
}

void Desktop::drag(QPoint from, QPoint to, const QStringList& modifiers) {
    constexpr int steps = 8;
    QStringList way = at(from) + held(QStringLiteral("keydown"), modifiers) +
                      button(QStringLiteral("mousedown"), 1);
    for (int step = 1; step <= steps; ++step)
        way += at(from + (to - from) * step / steps);
    xdotool(way + held(QStringLiteral("keyup"), modifiers));
}

void Desktop::wheel(int turns) {
    for (int turn = 0; turn < std::abs(turns); ++turn)
        xdotool(button(QStringLiteral("click"), turns > 0 ? 5 : 4));
}

void Desktop::key(const QString& name) {
    xdotool({QStringLiteral("key"), name});
}

void Desktop::type(const QString& text) {
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("5"), text});
}

void Desktop::focus(qint64 windowId) {
    xdotool({QStringLiteral("windowfocus"), QString::number(windowId)});
}

void Desktop::resize(qint64 windowId, QSize size) {
    xdotool(
        {QStringLiteral("windowsize"), QString::number(windowId), QString::number(size.width()),
         QString::number(size.height())});
}

} // namespace e2e
