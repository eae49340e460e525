#include "app/MarksCommand.h"

#include "FMDB/FMDatabase.h"
#include "app/CatalogueFiles.h"
#include "app/MarksServices.h"
#include "app/SingleInstance.h"
#include "catalogue/PBCatalogue.h"
#include "library/PBAliasManager.h"
#include "platform/files/FileManager.h"
#include "platform/program/StandardError.h"
#include "platform/program/StandardFolders.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cstdio>

namespace {

constexpr int failure = 1;
const QByteArray exported("marks\n"); // in front of what is exported, which may be nothing

using ImportResult = MarksServices::ImportResult;

QByteArray textOf(const ImportResult& result) {
    return QJsonDocument(QJsonObject{
                             {QStringLiteral("whole"), result.isWhole},
                             {QStringLiteral("told"), QJsonArray::fromStringList(result.told)}})
        .toJson(QJsonDocument::Compact);
}

ImportResult resultOf(const QByteArray& text) {
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    ImportResult result{object.value(QStringLiteral("whole")).toBool(), {}};
    for (const QJsonValue& told : object.value(QStringLiteral("told")).toArray())
        result.told.append(told.toString());
    return result;
}

/// Folders are where they were last seen.
class LastPlaces final : public PBAliasServices {
public:
    PBAliasResolution resolveAlias(
        const PBAliasObject& /*root*/, const PBAliasLook& /*look*/, QString* /*error*/) override {
        return {};
    }
    bool storeReservePath(qint64 /*aliasId*/, const QString& /*path*/) override { return true; }
    bool storeBookmark(qint64 /*aliasId*/, const PBAliasBookmark& /*bookmark*/) override {
        return false;
    }
};

/// The catalogue without the program around it.
class BareCatalogue {
public:
    BareCatalogue() : _files(path()), _roots({_files, _places, {}}) {
        QDir().mkpath(platform::StandardFolders::dataFolder());
        if (!_files.open()) return;
        PBCatalogue(_files).checkTables_FilesDb();
        FMResultSet row = _files.executeQuery(
            QStringLiteral("select Id,Data,ReservePath,State,Type from FolderAlias"));
        while (row.next()) {
            const QString place = row.stringForColumnIndex(2);
            const bool isThere =
                platform::FileManager::look(place).presence == platform::Presence::There;
            _roots.addAliasObject(PBAliasObject::aliasObjectWithId(
                row.longLongIntForColumnIndex(0), row.dataForColumnIndex(1),
                isThere ? QUrl::fromLocalFile(place) : QUrl(), place,
                static_cast<std::uint64_t>(row.longLongIntForColumnIndex(3)),
                static_cast<std::uint64_t>(row.longLongIntForColumnIndex(4))));
        }
        row.close();
        _marks.emplace(MarksServices::Environment{
            .filesPath = path(),
            .aliasManager = _roots,
            .tell = platform::complain,
            .observe = {}});
    }
    ~BareCatalogue() {
        if (_marks) _marks->finish();
    }
    BareCatalogue(const BareCatalogue&) = delete;
    BareCatalogue& operator=(const BareCatalogue&) = delete;

    [[nodiscard]] MarksServices* marks() { return _marks ? &*_marks : nullptr; }

private:
    static QString path() { return FMDatabase::databasePathWithFileName(CatalogueFiles::files); }

    FMDatabase _files;
    LastPlaces _places;
    PBAliasManager _roots;
    std::optional<MarksServices> _marks;
};

std::optional<QByteArray> readInput(const QString& name) {
    QFile file(name);
    const bool isOpen =
        name == u"-" ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen) {
        platform::complain(QStringLiteral("%1 can't be read (%2)").arg(name, file.errorString()));
        return std::nullopt;
    }
    return file.readAll();
}

bool writeOutput(const QString& name, const QByteArray& lines) {
    if (name == u"-") {
        const auto size = static_cast<std::size_t>(lines.size());
        const bool isWritten =
            std::fwrite(lines.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
        if (!isWritten) platform::complain(QStringLiteral("standard output can't be written"));
        return isWritten;
    }
    // Whole or not at all: what was exported before is not lost to a full disk.
    QSaveFile file(name);
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly) && file.write(lines) == lines.size() && file.commit())
        return true;
    platform::complain(QStringLiteral("%1 can't be written (%2)").arg(name, file.errorString()));
    return false;
}

int noAnswer() {
    platform::complain(
        QStringLiteral("another Velmora has the catalogue in %1 open and does not answer")
            .arg(platform::StandardFolders::dataFolder()));
    return failure;
}

int runExport(const QString& name, const std::optional<QByteArray>& lines) {
    if (!lines) {
        platform::complain(QStringLiteral("the ledger of marks can't be read"));
        return failure;
    }
    return writeOutput(name, *lines) ? 0 : failure;
}

int tell(const ImportResult& result) {
    for (const QString& sentence : result.told)
        platform::complain(sentence);
    return result.isWhole ? 0 : failure;
}

} // namespace

int MarksCommand::run(const CommandLineOptions& options) {
    std::optional<QByteArray> lines;
    if (!options.importMarks.isEmpty()) {
        lines = readInput(options.importMarks);
        if (!lines) return failure;
    }
    const QString folder = platform::StandardFolders::dataFolder();
    std::optional<SingleInstance> instance(std::in_place);
    if (!instance->takeForAMoment(folder)) {
        SingleInstance::Request request;
        request.wantsMarks = !lines;
        request.importMarks = lines;
        const auto said = SingleInstance::ask(folder, request);
        if (said && lines) return tell(resultOf(*said));
        if (said)
            return runExport(
                options.exportMarks, said->startsWith(exported)
                                         ? std::optional(said->mid(exported.size()))
                                         : std::nullopt);
        // Whoever has it may have ended meanwhile, or just begun another run like this one.
        if (!instance->takeForAMoment(folder)) return noAnswer();
    }
    std::optional<BareCatalogue> catalogue(std::in_place);
    MarksServices* marks = catalogue->marks();
    if (!marks) {
        platform::complain(QStringLiteral("the catalogue in %1 can't be opened").arg(folder));
        return failure;
    }
    ImportResult imported;
    std::optional<QByteArray> exports;
    if (lines) {
        marks->importMarks(*lines, [&](const ImportResult& result) { imported = result; });
    } else {
        marks->exportMarks([&](const auto& all) { exports = all; });
    }
    // Whoever reads what is written may take its time; nobody waits for that.
    catalogue.reset();
    instance.reset();
    return lines ? tell(imported) : runExport(options.exportMarks, exports);
}

void MarksCommand::answerLaterStarts(SingleInstance& instance, MarksServices& marks) {
    instance.setMarksSource(
        [&marks](const SingleInstance::Answer& answer) {
            marks.exportMarks([answer](const auto& lines) {
                answer(lines ? exported + *lines : QByteArray("no marks"));
            });
        },
        [&marks](const QByteArray& lines, const SingleInstance::Answer& answer) {
            marks.importMarks(
                lines, [answer](const ImportResult& result) { answer(textOf(result)); });
        });
}
