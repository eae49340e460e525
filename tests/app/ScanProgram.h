#pragma once

#include "support/Rows.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

using Figures = std::map<std::string, double>;

/// The program itself, on folders of pictures that the test makes.
struct ScanProgramTest : testing::Test {
    ~ScanProgramTest() override {
        if (program.state() == QProcess::NotRunning) return;
        program.kill();
        program.waitForFinished();
    }

    struct Outcome {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    /// Begins a run on the profile, without a display.
    void start(const QStringList& more) {
        start(program, QStringList{u"--profile"_s, profile} + more);
    }
    static void start(QProcess& process, const QStringList& arguments) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VELMORA_PROGRAM), arguments);
    }
    /// Ends the running program as a desktop does.
    void terminate() {
        program.terminate();
        ASSERT_TRUE(program.waitForFinished(60'000));
    }
    static Outcome run(const QStringList& arguments) {
        QProcess process;
        start(process, arguments);
        if (!process.waitForFinished(240'000)) return {};
        return {
            process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2,
            process.readAllStandardOutput(), process.readAllStandardError()};
    }
    [[nodiscard]] Outcome runOnProfile(const QStringList& more) const {
        return run(QStringList{u"--profile"_s, profile} + more);
    }
    [[nodiscard]] Outcome runUntilIdle(const QStringList& more = {}) const {
        return runOnProfile(QStringList{u"--until-idle"_s} + more);
    }
    /// Runs until nothing is left to do; answers the figures and keeps what was said.
    QJsonObject visit(const QStringList& more = {}) {
        const Outcome outcome = runUntilIdle(QStringList{u"--stats"_s, u"-"_s} + more);
        said = outcome.errors;
        EXPECT_EQ(outcome.code, 0) << said.toStdString();
        return QJsonDocument::fromJson(outcome.output).object();
    }
    static void expectFigures(const QJsonObject& stats, const Figures& expected) {
        for (const auto& [name, value] : expected)
            EXPECT_EQ(stats[QString::fromStdString(name)].toDouble(-1), value) << name;
    }

    /// Answers its bytes.
    QByteArray makePicture(const QString& name, int width = 40) const {
        support::writePicture(pictures + u'/' + name, {width, 30});
        return support::readFile(pictures + u'/' + name);
    }
    QStringList onDisk() const {
        QStringList names;
        QDirIterator iterator(pictures, {u"*.jpg"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (iterator.hasNext())
            names.append(iterator.next().mid(pictures.size() + 1));
        return support::sorted(names);
    }
    QStringList rows(const QString& sql, const char* file = "files.db") const {
        return support::sorted(support::rowsOf(profile + u'/' + QLatin1StringView(file), sql));
    }
    QStringList inCatalogue() const {
        return rows(u"select ifnull(Folder.RelativePath||'/','')||FileName from ImageFile "
                    "join Folder on Folder.Id = FolderId"_s);
    }
    /// The catalogue gets to be what is on disk.
    [[nodiscard]] bool follows() const {
        const bool followed = support::spinUntil(
            [this] { return inCatalogue() == onDisk(); }, std::chrono::seconds(90));
        EXPECT_TRUE(followed) << inCatalogue().join(u' ').toStdString() << "\ninstead of\n"
                              << onDisk().join(u' ').toStdString();
        return followed;
    }
    /// Of the running program; empty until it answers.
    [[nodiscard]] QJsonObject state() const {
        return QJsonDocument::fromJson(runOnProfile({u"--state"_s}).output).object();
    }
    /// What the running program tells in its window.
    [[nodiscard]] QString notice() const {
        QString text;
        EXPECT_TRUE(support::spinUntil(
            [&] {
                text = state()[u"notice"_s].toString();
                return !text.isEmpty();
            },
            std::chrono::seconds(60)));
        return text;
    }
    void expectConsistentCatalogue() const {
        FMDatabase db(profile + u"/files.db"_s);
        if (db.open()) support::expectConsistentCatalogue(db);
    }

    QTemporaryDir temporary;
    const QString profile = temporary.filePath(u"profile"_s);
    const QString pictures = temporary.filePath(u"pictures"_s);
    QProcess program;
    QByteArray said;
};
