#include "app/MarksServices.h"

#include "FMDB/FMDatabase.h"
#include "app/CatalogueFiles.h"
#include "app/ScanPipeline.h"
#include "catalogue/marks/MarksFile.h"
#include "fileactions/marks/MarksExchange.h"
#include "library/PBAliasManager.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QFileInfo>

using platform::MainLoop;

namespace {

QString beside(const QString& file, const QString& name) {
    return platform::pathInFolder(QFileInfo(file).absolutePath(), name);
}

} // namespace

MarksServices::MarksServices(Environment environment)
    : _environment(std::move(environment)),
      _marksPath(beside(_environment.filesPath, CatalogueFiles::marks)),
      _snapshotFolder(beside(_environment.filesPath, QStringLiteral("marks-snapshots"))),
      _upkeep({_marksPath, _snapshotFolder, _environment.tell, _environment.observe}),
      _restorer(
          {.connect = [this] { return connect(); },
           .mountedRoots = [this] { return roots(); },
           .isRemovable =
               [this](const QByteArray& rootPath) {
                   const auto root =
                       _environment.aliasManager.findAliasObjectByPath(QFile::decodeName(rootPath));
                   return root && root->type() == PBAliasObject::Removable;
               },
           .marksCameBack = [this](std::vector<qint64> fileIds) { readAgain(std::move(fileIds)); },
           .ledgerDidChange = [this] { _upkeep.wake(); }}) {
    const QString told = marks::settleLedger(_marksPath, _snapshotFolder);
    if (!told.isEmpty()) _environment.tell(told);
    _upkeep.wake(); // what the last run did not come to
}

MarksServices::~MarksServices() = default;

std::unique_ptr<FMDatabase> MarksServices::connect() const {
    // A ledger that was not there at the start is not made by looking for it.
    if (!QFile::exists(_marksPath)) return nullptr;
    auto both = marks::MarksLedger::connect(_environment.filesPath, _marksPath);
    if (both && _environment.observe) _environment.observe(*both);
    return both;
}

marks::RootPaths MarksServices::roots(bool withAway) const {
    marks::RootPaths found;
    for (const auto& root : _environment.aliasManager.aliasArray()) {
        const QString path = root->isMounted() || !withAway ? root->path() : root->reservePath();
        if (!path.isEmpty()) found.insert(root->aliasId(), path);
    }
    return found;
}

void MarksServices::setPipeline(ScanPipeline& pipeline, std::function<ScanBrowsing()> browsing) {
    _shown.emplace(fileactions::ShownPhotographs::Environment{
        .source = pipeline.groupTreeDataSource(),
        .factory = pipeline.factory(),
        .browsing = std::move(browsing),
        .readAgain = [this](std::vector<qint64> fileIds) { readAgain(std::move(fileIds)); }});
    _edits.emplace(fileactions::EditQueue::Environment{
        .connect = [this] { return connect(); },
        .mountedRoots = [this] { return roots(); },
        .folderRoots = _environment.aliasManager,
        .show = [this](const auto& rows, unsigned fields) { return _shown->show(rows, fields); },
        .tagsDidChange =
            [this] {
                if (_tagsDidChange) _tagsDidChange();
            },
        .ledgerDidChange = [this] { _upkeep.wake(); },
        .whileRowsChange = [&factory = pipeline.factory()](
                               const auto& change) { factory.whileRowsChange(change); }});
}

void MarksServices::readAgain(std::vector<qint64> fileIds) {
    MainLoop* loop = MainLoop::instance();
    if (!loop) return;
    loop->post(
        MainLoop::Mode::Common,
        [this, alive = std::weak_ptr(_alive), fileIds = std::move(fileIds)]() mutable {
            if (!alive.expired() && _edits) _edits->readAgain(std::move(fileIds));
        });
}

void MarksServices::exportMarks(Exported done) {
    platform::assertMainThread();
    const auto linesOf = [this](FMDatabase* both) {
        return both ? fileactions::exportMarks(*both, roots()) : std::nullopt;
    };
    if (!_edits) return done(linesOf(connect().get()));
    const auto lines = std::make_shared<std::optional<QByteArray>>();
    _edits->look(
        [linesOf, lines](FMDatabase* both) { *lines = linesOf(both); },
        [lines, done = std::move(done)] { done(*lines); });
}

std::variant<fileactions::PerformedEdit, QString>
MarksServices::storeLines(FMDatabase& both, const QByteArray& lines, ImportResult& result) const {
    const marks::RootPaths known = roots(true);
    fileactions::ImportPlan plan = fileactions::planImport(lines, [&](const QByteArray& path) {
        return fileactions::fileIdOfPath(both, known, path);
    });
    result = {!plan.hasBadLines, std::move(plan.told)};
    if (plan.edit.isEmpty()) return {};
    return fileactions::storeEdit(both, roots(), plan.edit);
}

void MarksServices::importMarks(const QByteArray& lines, Imported done) {
    platform::assertMainThread();
    const auto result = std::make_shared<ImportResult>();
    const auto tell = [result, done = std::move(done)](const QString& failure) {
        if (failure.isEmpty()) return done(*result);
        done({false, {QStringLiteral("nothing is imported, for %1").arg(failure)}});
    };
    const auto store = [this, lines, result](FMDatabase& both) {
        return storeLines(both, lines, *result);
    };
    if (_edits) return _edits->store(store, lines.count('\n'), tell);
    const auto both = connect();
    if (!both) return tell(QStringLiteral("the ledger of marks can't be opened"));
    const auto stored = store(*both);
    const auto* reason = std::get_if<QString>(&stored);
    tell(reason ? *reason : QString());
}

void MarksServices::finish() {
    *_alive = false;
    _alive.reset();
    _edits.reset();
    _shown.reset();
    _upkeep.finish();
}
