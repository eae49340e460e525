#include "e2e/Program.h"

#include "core/Application.h"
#include "support/ToldDesktop.h"

#include <QDBusConnectionInterface>

#include <csignal>

namespace {

using e2e::State;

/// A message bus of its own that starts the program for those who call it.
class StartingBus {
public:
    explicit StartingBus(const QProcessEnvironment& environment) {
        const QString id = PBUtilities::applicationId();
        support::writeFile(
            environment.value(u"XDG_RUNTIME_DIR"_s) + u"/dbus-1/services/"_s + id + u".service"_s,
            u"[D-BUS Service]\nName=%1\nExec=%2 --service\n"_s
                .arg(id, QStringLiteral(VELMORA_PROGRAM))
                .toUtf8());
        _bus.emplace(environment);
    }
    ~StartingBus() {
        if (const pid_t pid = program(); pid > 0) ::kill(pid, SIGKILL);
    }
    [[nodiscard]] const QString& address() const { return _bus->address(); }
    /// The process that has the application's name; 0 for none.
    [[nodiscard]] pid_t program() {
        const auto pid = bus().interface()->servicePid(PBUtilities::applicationId());
        return pid.isValid() ? static_cast<pid_t>(pid.value()) : 0;
    }
    /// As a desktop calls; the platform data are added.
    void call(const QString& method, QVariantList arguments = {}) {
        arguments.append(QVariantMap{{u"desktop-startup-id"_s, u"e2e-1_TIME1"_s}});
        const QString id = PBUtilities::applicationId();
        QDBusMessage message = QDBusMessage::createMethodCall(
            id, u'/' + QString(id).replace(u'.', u'/'), u"org.freedesktop.Application"_s, method);
        message.setArguments(arguments);
        bus().asyncCall(message);
    }
    void open(const QStringList& uris) { call(u"Open"_s, {uris}); }

private:
    [[nodiscard]] QDBusConnection bus() { return _bus->connection(u"caller"_s); }

    std::optional<support::PrivateBus> _bus;
};

class DesktopRunTest : public e2e::ProgramTest {
protected:
    static QString uri(const QString& path) { return QUrl::fromLocalFile(path).toString(); }
};

TEST_F(DesktopRunTest, callsOverTheBusStartTheProgramAndReachTheOneThatRuns) {
    paintPhotographs();
    useOwnPlaces();
    StartingBus bus(desktop.environment());
    ASSERT_FALSE(bus.address().isEmpty());
    desktop.setBus(bus.address());
    const QDir lisbon(photo(u"2022/Lisbon"_s));
    const QStringList names = lisbon.entryList(QDir::Files);
    ASSERT_GT(names.size(), 2);
    const auto isActive = [](const State& s) { return s.mainWindow()[u"active"_s].toBool(); };

    bus.open({uri(lisbon.filePath(names[1]))});
    ASSERT_TRUE(waitFor([&](const State& s) { return s.selected() == names[1]; }));
    // What runs is called by each later one.
    const QString window = state().mainWindow()[u"id"_s].toVariant().toString();
    desktop.minimize(window);
    EXPECT_TRUE(waitFor(std::not_fn(isActive)));
    bus.call(u"Activate"_s);
    EXPECT_TRUE(waitFor(isActive));
    EXPECT_EQ(state().selected(), names[1]);
    bus.open({u"sftp://elsewhere/a.jpg"_s, uri(lisbon.filePath(names[2]))});
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.selected() == names[2] && !s.json()[u"notice"_s].toString().isEmpty();
    }));
    bus.call(u"ActivateAction"_s, {u"fullscreen"_s, QVariantList()});
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    const pid_t first = bus.program();
    ASSERT_GT(first, 0);
    desktop.key(u"ctrl+q"_s);
    ASSERT_TRUE(
        support::spinUntil([&] { return ::kill(first, 0) != 0; }, std::chrono::seconds(60)));

    // One that the user has started has the name, too.
    startAgain({u"--add"_s, photos()});
    EXPECT_TRUE(support::spinUntil([&] { return bus.program() > 0; }, std::chrono::seconds(60)));
    bus.open({uri(lisbon.filePath(names[0]))});
    EXPECT_TRUE(waitForSelection(names[0]));
    waitForFocus();
    quit();
}

TEST_F(DesktopRunTest, theWholeScreenAndAShowCanBeAskedForAtTheStart) {
    startWithPhotographs();
    const QSize size = state().window().size();
    const QString name = state().items().at(1).name;
    select(name);
    quit();
    startAgain({u"--fullscreen"_s});
    EXPECT_TRUE(waitForWindow(desktop.screen.size()));
    EXPECT_FALSE(state().control(u"QMenuBar"_s));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitForWindow(size));
    quit();
    startAgain({u"--slideshow"_s});
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"playing"_s}, {u"slideshow.name"_s, name}}));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(rests({{u"large.image"_s, name}, {u"large.atRest"_s, true}}));
}

} // namespace
