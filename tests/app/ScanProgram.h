#pragma once

#include "FMDB/FMDatabase.h"
#include "support/Support.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using Figures = std::map<QString, double>;

/// The program itself, on folders of pictures that the test makes.
class ScanProgramTest : public testing::Test {
protected:
    ~ScanProgramTest() override {
        if (program.state() == QProcess::NotRunning) return;
        program.kill();
        program.waitForFinished();
    }

    void start(const QStringList& more) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        program.setProcessEnvironment(environment);
        program.start(
            QStringLiteral(VELMORA_PROGRAM),
            QStringList{QStringLiteral("--profile"), profile} + more);
    }
    /// Runs until nothing is left to do; answers the figures.
    QJsonObject visit(const QStringList& more = {}) {
        start(
            QStringList{
                QStringLiteral("--until-idle"), QStringLiteral("--stats"), QStringLiteral("-")} +
            more);
        EXPECT_TRUE(program.waitForFinished(240'000));
        EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
        return QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    }
    static void expectFigures(const QJsonObject& stats, const Figures& expected) {
        for (const auto& [name, value] : expected)
            EXPECT_EQ(stats[name].toDouble(-1), value) << name.toStdString();
    }

    void makePicture(const QString& name, int width = 40) const {
        const QString file = pictures + u'/' + name;
        QDir().mkpath(QFileInfo(file).absolutePath());
        QImage image(width, 30, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        ASSERT_TRUE(image.save(file));
    }
    QStringList onDisk() const {
        QStringList names;
        const QStringList filter{QStringLiteral("*.jpg")};
        QDirIterator iterator(pictures, filter, QDir::Files, QDirIterator::Subdirectories);
        while (iterator.hasNext())
            names.append(iterator.next().mid(pictures.size() + 1));
        names.sort();
        return names;
    }
    QStringList rows(const QString& sql, const char* file = "files.db") const {
        FMDatabase db(profile + u'/' + QLatin1StringView(file));
        QStringList found;
        if (!db.open()) return found;
        FMResultSet cursor = db.executeQuery(sql);
        while (cursor.next())
            found.append(cursor.stringForColumnIndex(0));
        found.sort();
        return found;
    }
    QStringList inCatalogue() const {
        return rows(
            QStringLiteral("select ifnull(Folder.RelativePath||'/','')||FileName from ImageFile "
                           "join Folder on Folder.Id = FolderId"));
    }
    testing::AssertionResult follows() const {
        const auto isInStep = [this] { return inCatalogue() == onDisk(); };
        if (support::spinUntil(isInStep, std::chrono::seconds(90)))
            return testing::AssertionSuccess();
        const QStringList known = inCatalogue();
        const QStringList there = onDisk();
        return testing::AssertionFailure()
               << "only in the catalogue: " << without(known, there)
               << "; only on disk: " << without(there, known);
    }
    static std::string without(QStringList names, const QStringList& others) {
        names.removeIf([&others](const QString& name) { return others.contains(name); });
        return names.join(u' ').toStdString();
    }
    /// Every metadata row has its image, every image its folder and is there once.
    void expectConsistentCatalogue() const {
        for (const char* table : {"Exif", "Tiff", "GPS", "IPTC", "ExifAux"}) {
            EXPECT_TRUE(rows(QStringLiteral("select FileId from %1 where FileId not in "
                                            "(select Id from ImageFile)")
                                 .arg(QLatin1StringView(table)))
                            .isEmpty());
        }
        EXPECT_TRUE(rows(QStringLiteral("select Id from ImageFile where FolderId not in "
                                        "(select Id from Folder)"))
                        .isEmpty());
        EXPECT_TRUE(rows(QStringLiteral("select FileName from ImageFile group by FolderId,FileName "
                                        "having count(*) > 1"))
                        .isEmpty());
    }

    QTemporaryDir temporary;
    const QString profile = temporary.filePath(QStringLiteral("profile"));
    const QString pictures = temporary.filePath(QStringLiteral("pictures"));
    QProcess program;
};
