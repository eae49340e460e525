#pragma once

#include "group/ItemOrder.h"
#include "image/BuiltThumbnails.h"
#include "library/LibrarySupport.h"
#include "scan/AttachedOperations.h"
#include "scan/ScanFactory.h"
#include "scan/ScanServices.h"

#include <QImageReader>

/// Reads pictures through the toolkit: what a scan needs of importers, without their formats.
struct ToolkitImporters final : PBImageImporterManager {
    struct Importer final : PBImageImporterProtocol {
        Importer(ToolkitImporters& owner, QString path) : _owner(owner), _path(std::move(path)) {}

        codec::PictureProperties propertiesAtIndex(std::size_t, std::stop_token stop) override {
            if (_owner.cannotRead && _owner.cannotRead(_path, stop)) return {};
            if (_owner.willRead) _owner.willRead(_path);
            const QSize size = QImageReader(_path).size();
            if (!size.isValid()) return {codec::PropertiesStatus::Unreadable, {}};
            PBDictionary all{{u"PixelWidth"_s, size.width()}, {u"PixelHeight"_s, size.height()}};
            const auto further = _owner.properties.find(QFileInfo(_path).fileName());
            if (further != _owner.properties.end())
                all.insert(further->second.begin(), further->second.end());
            return {codec::PropertiesStatus::Read, std::move(all)};
        }
        codec::ReadResult readImage(const codec::DecodeRequest&, std::stop_token) override {
            ++_owner.decoded;
            QImage image(_path); // the tests' pictures are small
            if (image.isNull()) return {codec::ReadStatus::Refused, {}};
            return {codec::ReadStatus::Decoded, {.image = std::move(image)}};
        }
        std::size_t imageCount() override { return 1; }
        QString utiType() override { return {}; }

    private:
        ToolkitImporters& _owner;
        const QString _path;
    };

    ToolkitImporters()
        : PBImageImporterManager({PBImageImporterClass{
              .typeIdentifiers = [] { return support::words("public.jpeg public.png"); },
              .initWithImagePath =
                  [this](const QString& path) { return std::make_unique<Importer>(*this, path); },
              .propertiesOfImages = {}}}) {}

    /// Called on the reading thread, before properties are read.
    std::function<void(const QString& path)> willRead;
    /// The same; whether the properties can't be read now.
    std::function<bool(const QString& path, const std::stop_token& stop)> cannotRead;
    /// Columns that a file's properties get besides its size, by file name.
    std::map<QString, PBDictionary> properties;
    std::atomic<int> decoded{0};
};

/// A folder of pictures, a catalogue on disk, and all that scans need, without a window. The clock
/// stands still unless the test moves it.
struct ScanTest : testing::Test {
    ScanTest() {
        // No test takes the power away.
        for (FMDatabase* db : {&files, &thumbnails, &scanFiles, &buildThumbnails})
            EXPECT_TRUE(db->executeUpdate(u"pragma synchronous = off"_s));
        EXPECT_TRUE(PBCatalogue(files).checkTables_FilesDb());
        EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
        browsing.groupTypeArray = std::make_shared<const std::vector<int>>();
        root = addRoot({});
    }
    ~ScanTest() override { endQueues(); }

    /// Paths below the folder of pictures. A picture's content follows from its size.
    void makePicture(const QString& name, QSize size = {8, 6}) const {
        support::writePicture(path(name), size);
    }
    void makePictures(const char* names) const {
        for (const QString& name : support::words(names))
            makePicture(name);
    }
    /// The file gets so many bytes and this date.
    void alter(const QString& name, qint64 size, const QDateTime& modified) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(size));
        ASSERT_TRUE(file.setFileTime(modified, QFileDevice::FileModificationTime));
    }
    QString path(const QString& name) const {
        const QString pictures = temporary.filePath(u"pictures"_s);
        return name.isEmpty() ? pictures : pictures + u'/' + name;
    }
    std::shared_ptr<PBAliasObject> addRoot(const QString& name, std::uint64_t state = 0) {
        const QString place = path(name);
        QDir().mkpath(place);
        const auto aliasId = PBCatalogue(files).insertFolderAliasWithData(
            place.toUtf8(), 0, place, static_cast<qint64>(state));
        auto alias = PBAliasObject::aliasObjectWithId(
            aliasId, place.toUtf8(), QUrl::fromLocalFile(place), place, state, 0);
        aliasManager.addAliasObject(alias);
        return alias;
    }

    /// Scans and waits for the end of all background work.
    void scan(const QString& relativePath = {}) {
        startScan(relativePath);
        waitForQueues();
    }
    void startScan(const QString& relativePath = {}) {
        cancelQueues();
        workTree = std::make_shared<PBGroupItemArray>();
        {
            const platform::Lock lock(_mutex);
            _publications.clear();
        }
        factory->startScan(root, relativePath, workTree, browsing);
    }
    void cancelQueues() {
        scanQueue.cancelAllOperations();
        buildQueue.cancelAllOperations();
    }
    void endQueues() {
        cancelQueues();
        waitForQueues();
    }
    void waitForQueues() {
        scanQueue.setSuspended(false);
        scanQueue.waitUntilAllOperationsAreFinished();
        buildQueue.waitUntilAllOperationsAreFinished();
    }
    /// Has what a watcher saw looked at.
    void tell(bool checkExist, std::vector<FolderRescan> rescans = {}, QStringList rewritten = {}) {
        WatchedChanges changes;
        changes.checkExist = checkExist;
        changes.rescans = std::move(rescans);
        changes.rewrittenFiles = std::move(rewritten);
        factory->attachChanges(changes, workTree, browsing);
    }
    /// The same, and waits for the end of that.
    void
    watch(bool checkExist, std::vector<FolderRescan> rescans = {}, QStringList rewritten = {}) {
        tell(checkExist, std::move(rescans), std::move(rewritten));
        waitForQueues();
    }
    /// The names of the images in the last publication, in the order of the tree.
    QStringList shown() const {
        const auto last = lastPublication();
        return last ? namesIn(last->groupItemArray) : QStringList();
    }
    static std::vector<std::shared_ptr<PBImageFileItem>> itemsIn(const PBGroupItemArray& tree) {
        std::vector<std::shared_ptr<PBImageFileItem>> all;
        for (const PBGroupItem* leaf : group::leavesOf(tree))
            all.insert(all.end(), leaf->imageFiles().begin(), leaf->imageFiles().end());
        return all;
    }
    static QStringList namesIn(const PBGroupItemArray& tree) {
        return support::listed(itemsIn(tree), [](const auto& item) { return item->fileName(); });
    }
    auto items() const { return itemsIn(*workTree); }
    /// How many images each publication had, in their order.
    std::vector<std::size_t> publishedCounts() const {
        const platform::Lock lock(_mutex);
        std::vector<std::size_t> counts;
        for (const auto& publication : _publications)
            counts.push_back(itemsIn(publication->groupItemArray).size());
        return counts;
    }
    std::shared_ptr<group::GroupPublication> lastPublication() const {
        const platform::Lock lock(_mutex);
        return _publications.empty() ? nullptr : _publications.back();
    }
    /// The same services but for what the function changes.
    void changeServices(const std::function<void(ScanServices&)>& change) {
        auto changed = std::make_shared<ScanServices>(*services);
        change(*changed);
        services = changed;
        factory = makeFactory();
    }

    void execute(const QString& sql) { ASSERT_TRUE(files.executeUpdate(sql)) << sql.toStdString(); }
    /// The rows of a statement on files.db, columns joined with "|".
    QStringList rows(const QString& sql) { return support::rowsOf(files, sql); }
    QStringList images() { return rows(u"select FileName from ImageFile order by 1"_s); }
    static int count(FMDatabase& db, const char* table) {
        const QString sql = u"select count(*) from "_s + QLatin1StringView(table);
        return support::rowsOf(db, sql).constFirst().toInt();
    }
    void expectConsistentCatalogue() { support::expectConsistentCatalogue(files); }

    QTemporaryDir temporary;
    support::Database files{temporary.filePath(u"files.db"_s)};
    support::Database thumbnails{temporary.filePath(u"thumbnail.db"_s)};
    support::Database scanFiles{files.databasePath()};
    support::Database buildThumbnails{thumbnails.databasePath()};
    ToldAliasServices aliasServices{files};
    PBAliasManager aliasManager{{files, aliasServices, {}}};
    PBScanFinishedManager finishedManager;
    ToolkitImporters importers;
    ScanFigures figures;
    platform::Mutex insertFolderAliasLock;
    std::atomic<double> now{1000};
    BuiltThumbnails unstored;
    platform::OperationQueue buildQueue{u"build"_s};
    platform::OperationQueue scanQueue{u"scan"_s};
    std::shared_ptr<BuildThumbServices> buildThumb{new BuildThumbServices{
        .db = buildThumbnails, .queue = buildQueue, .unstored = unstored, .didBuild = {}}};
    std::shared_ptr<const ScanServices> services{new ScanServices{
        .aliasManager = aliasManager,
        .scanFinishedManager = finishedManager,
        .insertFolderAliasLock = insertFolderAliasLock,
        .imageImporterManager = importers,
        .buildThumb = buildThumb,
        .publish =
            [this](std::shared_ptr<group::GroupPublication> publication) {
                const platform::Lock lock(_mutex);
                _publications.push_back(std::move(publication));
            },
        .scanFinished = [this](const auto& /*workTree*/) { ++finished; },
        .now = [this] { return now.load(); },
        .figures = figures}};
    std::unique_ptr<ScanFactory> factory = makeFactory();
    std::shared_ptr<PBAliasObject> root;
    std::shared_ptr<PBGroupItemArray> workTree;
    ScanBrowsing browsing;
    std::atomic<int> finished{0};

private:
    std::unique_ptr<ScanFactory> makeFactory() {
        return std::make_unique<ScanFactory>(
            ScanFactory::Environment{scanFiles, scanQueue, services, [] {}});
    }

    mutable platform::Mutex _mutex;
    std::vector<std::shared_ptr<group::GroupPublication>> _publications VELMORA_GUARDED_BY(_mutex);
};
