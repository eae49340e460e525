#include "app/MarksServices.h"

#include "FMDB/FMDatabase.h"
#include "app/ScanPipeline.h"
#include "catalogue/marks/MarksFile.h"
#include "fileactions/marks/MarksExchange.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "scan/AttachedOperations.h"

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
               [this](PBImageFileList items) {
                   MainLoop* loop = MainLoop::instance();
                   if (!loop) return;
                   loop->post(
                       MainLoop::Mode::Common,
                       [this, alive = std::weak_ptr(_alive), items = std::move(items)] {
                           if (!alive.expired() && _editor) _editor->refresh(items);
                       });
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
    _pipeline = &pipeline;
    _browsing = std::move(browsing);
    _editor.emplace(fileactions::MarksEditor::Environment{
        .connection = [this] { return connection(); },
        .mountedRoots = [this] { return roots(); },
        .liveTree = [this]() -> const PBGroupItemArray& {
            return _pipeline->groupTreeDataSource().groupItemArray();
        },
        .regroup = [this](PBImageFileList items) { regroup(std::move(items)); },
        .findInWorkTree =
            [this](std::vector<qint64> fileIds) { findInWorkTree(std::move(fileIds)); },
        .ledgerDidChange = [this] { _upkeep.wake(); }});
}

void MarksServices::regroup(PBImageFileList items) {
    const auto& work = _pipeline->groupTreeDataSource().groupItemArray_work();
    if (!work) return;
    const ScanFactory& factory = _pipeline->factory();
    factory.attach(std::make_shared<PBUpdateFileItemOperation>(
        factory.makeDictionary(nullptr, {}, work, _browsing()), std::move(items)));
}

void MarksServices::findInWorkTree(std::vector<qint64> fileIds) {
    const auto& work = _pipeline->groupTreeDataSource().groupItemArray_work();
    if (!work) return;
    const ScanFactory& factory = _pipeline->factory();
    factory.attach(std::make_shared<PBFindFileItemsOperation>(
        factory.makeDictionary(nullptr, {}, work, _browsing()), std::move(fileIds),
        [this, alive = std::weak_ptr(_alive)](PBImageFileList items) {
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Common, [this, alive, items = std::move(items)] {
                if (!alive.expired() && _editor) _editor->refresh(items);
            });
        }));
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
    if (_editor) {
        const auto outcome = _editor->perform(plan.edit);
        if (!outcome.isStored) failure = outcome.reason;
    } else {
        const auto stored = fileactions::storeEdit(*both, roots(), plan.edit);
        if (const auto* reason = std::get_if<QString>(&stored)) failure = *reason;
    }
    if (!failure.isNull())
        return {false, {QStringLiteral("nothing is imported, for %1").arg(failure)}};
    return result;
}

void MarksServices::finish() {
    *_alive = false;
    _alive.reset();
    _editor.reset();
    _pipeline = nullptr;
    _upkeep.finish();
    _both.reset();
}
