#include "e2e/Program.h"

#include "app/SingleInstance.h"

#include <QDirIterator>
#include <QJsonDocument>

#include <csignal>

namespace e2e {

namespace {

constexpr std::chrono::seconds longestWait{60};

} // namespace

ProgramTest::ProgramTest() : _profile(_folder.filePath(u"profile"_s)) {
    // Program and test find each other's socket there.
    const QString runtime = _folder.filePath(u"run"_s);
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    // Dialogs of the toolkit keep settings of their own.
    qputenv("HOME", QFile::encodeName(_folder.path()));
    for (const char* place : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        qunsetenv(place);
    QDir().mkpath(photos());
}

void ProgramTest::TearDown() {
    if (_program.state() == QProcess::NotRunning) return;
    ::kill(static_cast<pid_t>(_program.processId()), SIGTERM);
    expectEnd();
}

void ProgramTest::paintPhotographs() {
    ASSERT_EQ(QProcess::execute(QStringLiteral(VELMORA_PHOTOGRAPHS), {photos(), u"240"_s}), 0);
}

void ProgramTest::start() {
    startAgain({u"--size"_s, u"1180x800"_s, u"--add"_s, photos()});
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.hasAllThumbnails(); }));
}

void ProgramTest::startAgain(const QStringList& arguments) {
    QStringList always{u"--theme"_s, u"light"_s};
    if (!_hasOwnPlaces) always += {u"--profile"_s, _profile};
    _program.setProcessEnvironment(desktop.environment());
    _program.start(QStringLiteral(VELMORA_PROGRAM), always + arguments);
    ASSERT_TRUE(waitFor([&](const State& s) { return !s.isEmpty() && s.isAtRest(); }));
    waitForFocus();
}

void ProgramTest::useOwnPlaces() {
    _hasOwnPlaces = true;
    _profile = _folder.filePath(u".local/share/Velmora"_s);
}

void ProgramTest::expectEnd() {
    const bool ended =
        _program.waitForFinished(static_cast<int>(std::chrono::milliseconds(longestWait).count()));
    EXPECT_TRUE(ended) << "the program doesn't end";
    if (!ended) return _program.kill();
    EXPECT_EQ(_program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(_program.exitCode(), 0);
    // With sanitizers helpers keep their standard error, where the library of an encoder says that
    // it may not look at the machine.
    QByteArray told = _program.readAllStandardError();
    told.replace(
        "libnuma: Warning: /sys not mounted or invalid. Assuming one node: Operation not "
        "permitted\n",
        "");
    EXPECT_EQ(told.toStdString(), std::string());
}

testing::AssertionResult ProgramTest::waitForControl(
    const QString& name, const QString& property, const QJsonValue& value) const {
    return waitFor([&](const State& s) {
        const auto control = s.control(name);
        return control && (*control)[property] == value;
    });
}

State ProgramTest::state() const {
    const auto answer = SingleInstance::stateOf(_profile);
    return answer ? State(QJsonDocument::fromJson(*answer).object()) : State();
}

testing::AssertionResult
ProgramTest::waitFor(const Condition& condition, const std::function<void()>& meanwhile) const {
    State last;
    const bool holds = support::spinUntil(
        [&] {
            if (meanwhile) meanwhile();
            last = state();
            // A program that somebody else has started is waited for all the same.
            return condition(last) ||
                   (!_program.program().isEmpty() && _program.state() == QProcess::NotRunning);
        },
        longestWait);
    if (holds && condition(last)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(last);
}

Item ProgramTest::item(const QString& name) const {
    Item found;
    EXPECT_TRUE(waitFor([&](const State& s) {
        found = s.item(name);
        return !s.browser(u"scrolling"_s).toBool() && !found.name.isEmpty();
    })) << "no image "
        << name.toStdString();
    return found;
}

QString ProgramTest::pathOf(const QString& name) const {
    return QDirIterator(photos(), {name}, QDir::Files, QDirIterator::Subdirectories).next();
}

QString ProgramTest::selectFirst() {
    const QString name = state().items().value(0).name;
    select(name);
    return name;
}

void ProgramTest::clickOn(const std::function<QRect(const State&)>& find, const QString& name) {
    QRect place;
    ASSERT_TRUE(waitFor([&](const State& s) {
        place = find(s);
        return !place.isEmpty();
    })) << "no "
        << name.toStdString();
    desktop.click(place.center());
}

void ProgramTest::chooseInMenu(const QStringList& entries) {
    for (const QString& entry : entries)
        clickPlace(entry, u"QMenu"_s);
}

void ProgramTest::typePath(const QString& path) {
    desktop.key(u"ctrl+a"_s);
    desktop.type(path);
    // The list of completions comes when it likes, and then takes the first Return.
    EXPECT_TRUE(waitFor(
        [](const State& s) { return !s.isChoosingFile(); },
        [&] {
            if (!state().isChoosingFile()) return;
            desktop.key(u"Return"_s);
            (void)state(); // answered behind the key
        }));
}

void ProgramTest::waitForFocus(const QString& widget) {
    EXPECT_TRUE(waitFor([&](const State& s) {
        const QString focus = s.value(u"focus"_s).toString();
        return widget.isEmpty() ? !focus.isEmpty() : focus == widget;
    }));
}

} // namespace e2e
