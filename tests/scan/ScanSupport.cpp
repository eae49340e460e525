#include "scan/ScanSupport.h"

#include "catalogue/PBCatalogue.h"
#include "core/FileTypes.h"

#include <QFileInfo>
#include <QImage>
#include <QImageReader>

namespace {

struct ToolkitImporter final : image::ImageImporter {
    ToolkitImporter(ToolkitImporters& owner, QString path)
        : _owner(owner), _path(std::move(path)) {}

    std::optional<PBDictionary> propertiesAtIndex(std::size_t) override {
        if (_owner.willRead) _owner.willRead(_path);
        const QSize size = QImageReader(_path).size();
        if (!size.isValid()) return std::nullopt;
        PBDictionary properties{{u"PixelWidth"_s, size.width()}, {u"PixelHeight"_s, size.height()}};
        const auto further = _owner.properties.find(QFileInfo(_path).fileName());
        if (further != _owner.properties.end())
            properties.insert(further->second.begin(), further->second.end());
        return properties;
    }
    QImage createImageWithMaxSize(int maxSize, std::size_t, const std::stop_token&) override {
        ++_owner.decoded;
        QImage image(_path);
        if (image.isNull() || maxSize == 0) return image;
        return image.scaled(maxSize, maxSize, Qt::KeepAspectRatio);
    }

private:
    ToolkitImporters& _owner;
    const QString _path;
};

} // namespace

bool ToolkitImporters::isImageType(const QString& uti) const {
    return uti == u"public.jpeg" || uti == u"public.png";
}

std::unique_ptr<image::ImageImporter>
ToolkitImporters::imageImporterForImageURL(const QString& path) {
    if (!isImageType(PBUtilities::extentionToUTI(PBUtilities::pathExtension(path)))) return nullptr;
    return std::make_unique<ToolkitImporter>(*this, path);
}

ScanTest::ScanTest()
    : files(temporary.filePath(u"files.db"_s)), thumbnails(temporary.filePath(u"thumbnail.db"_s)),
      scanFiles(files.databasePath()), buildThumbnails(thumbnails.databasePath()),
      aliasServices(files), aliasManager({files, aliasServices, {}}) {
    for (FMDatabase* db : {&files, &thumbnails, &scanFiles, &buildThumbnails}) {
        EXPECT_TRUE(db->open());
        // No test takes the power away.
        EXPECT_TRUE(db->executeUpdate(u"pragma synchronous = off"_s));
    }
    EXPECT_TRUE(PBCatalogue(files).checkTables_FilesDb());
    EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
    buildThumb = std::shared_ptr<BuildThumbServices>(
        new BuildThumbServices{.db = buildThumbnails, .queue = buildQueue, .didBuild = {}});
    services = std::shared_ptr<const ScanServices>(new ScanServices{
        .aliasManager = aliasManager,
        .scanFinishedManager = finishedManager,
        .insertFolderAliasLock = insertFolderAliasLock,
        .imageImporters = importers,
        .buildThumb = buildThumb,
        .publish =
            [this](std::shared_ptr<group::GroupPublication> publication) {
                const std::lock_guard lock(_mutex);
                _publications.push_back(std::move(publication));
            },
        .scanFinished = [this] { ++finished; },
        .isBeingWritten = {},
        .now = [this] { return now.load(); },
        .figures = figures});
    factory = std::make_unique<ScanFactory>(
        ScanFactory::Environment{scanFiles, scanQueue, services, [] {}});
    browsing.groupTypeArray = std::make_shared<const std::vector<int>>(std::vector<int>());
    root = addRoot({});
}

ScanTest::~ScanTest() {
    scanQueue.cancelAllOperations();
    scanQueue.waitUntilAllOperationsAreFinished();
    buildQueue.cancelAllOperations();
    buildQueue.waitUntilAllOperationsAreFinished();
}

QString ScanTest::path(const QString& name) const {
    const QString pictures = temporary.filePath(u"pictures"_s);
    return name.isEmpty() ? pictures : pictures + u'/' + name;
}

void ScanTest::makePicture(const QString& name, QSize size, int seed) const {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor::fromRgb(static_cast<QRgb>(seed) * 2654435U));
    QDir().mkpath(QFileInfo(path(name)).absolutePath());
    EXPECT_TRUE(image.save(path(name))) << name.toStdString();
}

std::shared_ptr<PBAliasObject> ScanTest::addRoot(const QString& name, std::uint64_t state) {
    QDir().mkpath(path(name));
    const QString place = path(name);
    const auto aliasId = PBCatalogue(files).insertFolderAliasWithData(
        place.toUtf8(), 0, place, static_cast<qint64>(state));
    auto alias = PBAliasObject::aliasObjectWithId(
        aliasId, place.toUtf8(), QUrl::fromLocalFile(place), place, state, 0);
    aliasManager.addAliasObject(alias);
    return alias;
}

void ScanTest::startScan(const QString& relativePath) {
    buildQueue.cancelAllOperations();
    scanQueue.cancelAllOperations();
    workTree = std::make_shared<PBGroupItemArray>();
    {
        const std::lock_guard lock(_mutex);
        _publications.clear();
    }
    factory->startScan(root, relativePath, workTree, browsing);
}

void ScanTest::scan(const QString& relativePath) {
    startScan(relativePath);
    waitForQueues();
}

void ScanTest::waitForQueues() {
    scanQueue.waitUntilAllOperationsAreFinished();
    buildQueue.waitUntilAllOperationsAreFinished();
}

std::size_t ScanTest::publications() const {
    const std::lock_guard lock(_mutex);
    return _publications.size();
}

QStringList ScanTest::namesIn(const group::GroupPublication& publication) {
    QStringList names;
    for (const auto& top : publication.groupItemArray) {
        auto leaves = top->leafGroupItemArray();
        if (top->isLeafNode()) leaves.push_back(top.get());
        for (const PBGroupItem* leaf : leaves)
            for (const auto& item : leaf->imageFiles())
                names.append(item->fileName());
    }
    return names;
}

QStringList ScanTest::shown() const {
    const std::lock_guard lock(_mutex);
    return _publications.empty() ? QStringList() : namesIn(*_publications.back());
}

std::vector<std::shared_ptr<PBImageFileItem>> ScanTest::items() const {
    std::vector<std::shared_ptr<PBImageFileItem>> all;
    for (const auto& top : *workTree)
        for (const auto& item : top->imageFiles())
            all.push_back(item);
    return all;
}
