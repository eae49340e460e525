// What an edit of 10,000 photographs costs that are on show, grouped by stars: from the key to the
// commit against the bare updates of both files, then to the swapped tree, and how long the main
// loop waits meanwhile.

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/marks/MarksFile.h"
#include "fileactions/marks/EditQueue.h"
#include "fileactions/marks/ShownPhotographs.h"
#include "group/GroupTypes.h"
#include "image/BuiltThumbnails.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/MainLoop.h"
#include "scan/ScanServices.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

using bench::millisecondsOf;

constexpr int photographs = 10'000;
constexpr int rounds = 9;
constexpr double longestSwap = 400; // milliseconds
constexpr double longestWait = 50;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "bench_edits: %s failed\n", what);
    std::exit(1);
}

struct NoRoots final : PBAliasServices {
    PBAliasResolution
    resolveAlias(const PBAliasObject&, const PBAliasLook& /*look*/, QString* /*error*/) override {
        return {};
    }
    bool storeReservePath(qint64, const QString&) override { return true; }
    bool storeBookmark(qint64, const PBAliasBookmark&) override { return true; }
};

/// The program's edits without its window: the same queues, trees and connections.
class Edits {
public:
    Edits() {
        for (FMDatabase* db : {&_files, &_scanFiles, &_thumbnails})
            require(db->open(), "opening");
        require(PBCatalogue(_files).checkTables_FilesDb(), "making the catalogue");
        require(marks::settleLedger(_marksPath, path("snapshots")).isEmpty(), "the ledger");
        _both = connect();
        addPhotographs();
        _factory = std::make_unique<ScanFactory>(
            ScanFactory::Environment{_scanFiles, _scanQueue, makeServices(), [this] {
                                         _source.cancelDelayedPublications();
                                     }});
        _browsing.groupTypeArray =
            std::make_shared<const std::vector<int>>(std::vector{int(group::StarRating)});
        showAll();
        _shown.emplace(fileactions::ShownPhotographs::Environment{
            .source = _source,
            .factory = *_factory,
            .browsing = [this] { return _browsing; },
            .readAgain = [](const auto&) { require(false, "one item for each photograph"); }});
        _queue.emplace(fileactions::EditQueue::Environment{
            .connect = [this] { return connect(); },
            .mountedRoots =
                [] {
                    return marks::RootPaths{{1, QStringLiteral("/pictures")}};
                },
            .folderRoots = _aliasManager,
            .show =
                [this](const auto& rows, unsigned fields) { return _shown->show(rows, fields); },
            .tagsDidChange = [] {},
            .ledgerDidChange = [] {}});
        QObject::connect(&*_queue, &fileactions::EditRunner::didEdit, [this] { _isStored = true; });
        _source.setDidSwap([this] { _isSwapped = true; });
        rate(1); // the ledger has all of them from now on
    }
    ~Edits() {
        _queue->finish();
        _scanQueue.waitUntilAllOperationsAreFinished();
    }

    /// Row by row with statements that are kept, in one transaction over both files.
    double bareUpdates(int stars) {
        return millisecondsOf([&] {
            FMTransaction transaction(*_both);
            for (const qint64 id : _ids) {
                _both->executeUpdate(
                    QStringLiteral("update ImageFile set FileStars = ? where Id = ?"), stars, id);
                _both->executeUpdate(
                    QStringLiteral("update Marks set Stars = ? where FileId = ?"), stars, id);
            }
            require(transaction.commit(), "bare updates");
        });
    }

    /// Milliseconds from the key to the items; what comes behind that is noted.
    double rate(int stars) {
        using Clock = std::chrono::steady_clock;
        _isStored = _isSwapped = false;
        const auto start = Clock::now();
        const auto since = [](Clock::time_point from) {
            return std::chrono::duration<double, std::milli>(Clock::now() - from).count();
        };
        _queue->run({.fileIds = _ids, .change = fileactions::PhotographEdit::Rate{stars}});
        double stored = 0;
        double busiest = since(start);
        while (!_isSwapped) {
            const auto turn = Clock::now();
            // Events that wait are handled; it is their work that keeps the user waiting.
            QCoreApplication::processEvents();
            busiest = std::max(busiest, since(turn));
            if (_isStored && stored == 0) stored = since(start);
            std::this_thread::yield();
        }
        swaps.push_back(since(start));
        waits.push_back(busiest);
        require(_source.groupItemArray().size() == 1, "one group of stars");
        require(_source.groupItemArray()[0]->imageFileCount() == photographs, "all of them");
        return stored;
    }

    std::vector<double> swaps;
    std::vector<double> waits;

private:
    QString path(const char* name) const { return _profile.filePath(QLatin1StringView(name)); }
    std::unique_ptr<FMDatabase> connect() const {
        auto both = marks::MarksLedger::connect(_files.databasePath(), _marksPath);
        require(both != nullptr, "opening both files");
        return both;
    }
    void addPhotographs() {
        PBCatalogue catalogue(_files);
        FMTransaction transaction(_files);
        const qint64 root = catalogue.insertFolderAliasWithData(
            "bookmark", 0, QStringLiteral("/pictures"), qint64(0));
        const qint64 folder = catalogue.insertFolderWithAliasId(root, {});
        for (int number = 0; number < photographs; ++number) {
            _ids.push_back(catalogue.insertImageFileWithDictionary(
                {{QStringLiteral("FolderId"), folder},
                 {QStringLiteral("FileName"), QStringLiteral("IMG_%1.jpg").arg(number)},
                 {QStringLiteral("FileSize"), 1000},
                 {QStringLiteral("FileStars"), 0},
                 {QStringLiteral("FileFlag"), 0}}));
        }
        require(transaction.commit(), "adding photographs");
    }
    std::shared_ptr<const ScanServices> makeServices() {
        return std::shared_ptr<const ScanServices>(new ScanServices{
            .aliasManager = _aliasManager,
            .scanFinishedManager = _finishedManager,
            .insertFolderAliasLock = _insertFolderAliasLock,
            .imageImporterManager = _importers,
            .buildThumb = _buildThumb,
            .publish = _source.publisher(),
            .scanFinished = [](const auto& /*workTree*/) {},
            .isBeingWritten = {},
            .now = [] { return 0.0; },
            .figures = _figures,
        });
    }
    void showAll() {
        _source.setGroupItemArray_work(_work);
        group::GroupingStep step(
            {.workGroupItemArray = _work,
             .groupTypeArray = *_browsing.groupTypeArray,
             .sortType = _browsing.sortType,
             .searchString = {}},
            _scanFiles, nullptr);
        std::vector<group::ImageFileRow> rows;
        for (const qint64 id : _ids) {
            group::ImageFileRow& row = rows.emplace_back();
            row.id = id;
            row.folderId = 1;
            row.fileName = QStringLiteral("IMG_%1.jpg").arg(id);
        }
        for (const auto& row : rows)
            step.insert(row, QStringLiteral("/pictures"));
        _source.groupItemArrayDidFinish(group::makeGroupPublication(_work));
    }

    const QTemporaryDir _profile;
    platform::MainLoop _loop;
    FMDatabase _files{path("files.db")};
    FMDatabase _scanFiles{path("files.db")};
    FMDatabase _thumbnails{path("thumbnail.db")};
    const QString _marksPath = path("marks.db");
    std::unique_ptr<FMDatabase> _both;
    std::vector<qint64> _ids;
    NoRoots _noRoots;
    PBAliasManager _aliasManager{{_files, _noRoots, {}}};
    PBScanFinishedManager _finishedManager;
    platform::Mutex _insertFolderAliasLock;
    PBImageImporterManager _importers;
    ScanFigures _figures;
    BuiltThumbnails _unstored;
    platform::OperationQueue _buildQueue{QStringLiteral("build")};
    std::shared_ptr<BuildThumbServices> _buildThumb{new BuildThumbServices{
        .db = _thumbnails, .queue = _buildQueue, .unstored = _unstored, .didBuild = {}}};
    PBGroupTreeDataSource _source;
    ScanBrowsing _browsing;
    const std::shared_ptr<PBGroupItemArray> _work = std::make_shared<PBGroupItemArray>();
    std::unique_ptr<ScanFactory> _factory;
    std::optional<fileactions::ShownPhotographs> _shown;
    std::optional<fileactions::EditQueue> _queue;
    bool _isStored = false;
    bool _isSwapped = false;
    platform::OperationQueue _scanQueue{QStringLiteral("scan")};
};

double median(std::vector<double> times) {
    std::ranges::sort(times);
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    Edits edits;
    edits.swaps.clear();
    edits.waits.clear();
    int stars = 0;
    const auto next = [&] { return stars = stars % 5 + 1; };
    bool met = bench::printMedianRatio(
        "10,000 rated on show / bare updates of both files", rounds,
        [&] { return edits.bareUpdates(next()); }, [&] { return edits.rate(next()); }, 1.5);
    met = bench::printFigure(
              "10,000 rated, to the swapped tree", median(edits.swaps), "ms", longestSwap) &&
          met;
    met = bench::printFigure(
              "10,000 rated, longest wait of the loop", std::ranges::max(edits.waits), "ms",
              longestWait) &&
          met;
    return met ? 0 : 1;
}
