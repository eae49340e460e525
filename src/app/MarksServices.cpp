#include "app/MarksServices.h"

#include "FMDB/FMDatabase.h"
#include "app/ScanPipeline.h"
#include "catalogue/marks/MarksFile.h"
#include "fileactions/marks/MarksExchange.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QFileInfo>

using platform::MainLoop;

namespace {

QString beside(const QString& file, const QString& name) {
    return QFileInfo(file).absolutePath() + u'/' + name;
}

} // namespace

MarksServices::MarksServices(Environment environment)
    : _environment(std::move(environment)),
      _marksPath(beside(_environment.filesPath, QStringLiteral("marks.db"))),
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
           .marksCameBack =
               [this](const PBImageFileList& items) {
                   std::vector<qint64> fileIds;
                   for (const auto& item : items)
                       fileIds.push_back(item->fileId());
                   readAgain(std::move(fileIds));
               },
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

FMDatabase* MarksServices::connection() {
    platform::assertMainThread();
    if (!_both) _both = connect();
    return _both.get();
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
        .ledgerDidChange = [this] { _upkeep.wake(); }});
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

std::optional<QByteArray> MarksServices::exportMarks() {
    FMDatabase* both = connection();
    return both ? fileactions::exportMarks(*both, roots()) : std::nullopt;
}

MarksServices::ImportResult MarksServices::importMarks(const QByteArray& lines) {
    FMDatabase* both = connection();
    if (!both)
        return {
            false,
            {QStringLiteral("nothing is imported, for the ledger of marks can't be opened")}};
    const marks::RootPaths known = roots(true);
    fileactions::ImportPlan plan = fileactions::planImport(lines, [&](const QByteArray& path) {
        return fileactions::fileIdOfPath(*both, known, path);
    });
    ImportResult result{!plan.hasBadLines, std::move(plan.told)};
    if (plan.edit.isEmpty()) return result;
    QString failure;
    if (_edits) {
        failure = _edits->storeNow(plan.edit);
    } else {
        const auto stored = fileactions::storeEdit(*both, roots(), plan.edit);
        if (const auto* reason = std::get_if<QString>(&stored)) failure = *reason;
    }
    if (!failure.isEmpty())
        return {false, {QStringLiteral("nothing is imported, for %1").arg(failure)}};
    return result;
}

void MarksServices::finish() {
    *_alive = false;
    _alive.reset();
    _edits.reset();
    _shown.reset();
    _upkeep.finish();
    _both.reset();
}
