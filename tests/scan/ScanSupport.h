#pragma once

#include "FMDB/FMDatabase.h"
#include "library/LibrarySupport.h"
#include "platform/OperationQueue.h"
#include "scan/AttachedOperations.h"
#include "scan/ScanFactory.h"
#include "scan/ScanServices.h"
#include "support/Rows.h"

#include <mutex>

/// Reads pictures through the toolkit: what a scan needs of importers, without their formats.
struct ToolkitImporters final : image::ImageImporters {
    [[nodiscard]] bool isImageType(const QString& uti) const override;
    [[nodiscard]] std::unique_ptr<image::ImageImporter>
    imageImporterForImageURL(const QString& path) override;

    /// Called on the reading thread, before properties are read.
    std::function<void(const QString& path)> willRead;
    /// Columns that a file's properties get besides its size, by file name.
    std::map<QString, PBDictionary> properties;
    std::atomic<int> decoded{0};
};

/// A folder of pictures, a catalogue on disk, and all that scans need, without a window. The clock
/// stands still unless the test moves it.
struct ScanTest : testing::Test {
    ScanTest();
    ~ScanTest() override;

    /// Paths below the folder of pictures. A picture's content follows from the seed.
    void makePicture(const QString& name, QSize size = {8, 6}, int seed = 0) const;
    [[nodiscard]] QString path(const QString& name) const;
    std::shared_ptr<PBAliasObject> addRoot(const QString& name, std::uint64_t state = 0);

    /// Scans and waits for the end of all background work.
    void scan(const QString& relativePath = {});
    void startScan(const QString& relativePath = {});
    void waitForQueues();
    /// The names of the images in the last publication, in the order of the tree.
    [[nodiscard]] QStringList shown() const;
    [[nodiscard]] static QStringList namesIn(const group::GroupPublication& publication);
    [[nodiscard]] std::size_t publications() const;
    [[nodiscard]] std::vector<std::shared_ptr<PBImageFileItem>> items() const;

    /// The rows of a statement on files.db, columns joined with "|".
    [[nodiscard]] QStringList rows(const QString& sql) { return support::rowsOf(files, sql); }
    [[nodiscard]] QStringList thumbnailRows(const QString& sql) {
        return support::rowsOf(thumbnails, sql);
    }
    [[nodiscard]] static QStringList names(std::initializer_list<const char*> list) {
        return support::listed(list, [](const auto* name) { return QString::fromLatin1(name); });
    }
    void expectConsistentCatalogue() { support::expectConsistentCatalogue(files); }

    QTemporaryDir temporary;
    FMDatabase files;
    FMDatabase thumbnails;
    FMDatabase scanFiles;
    FMDatabase buildThumbnails;
    ToldAliasServices aliasServices;
    PBAliasManager aliasManager;
    PBScanFinishedManager finishedManager;
    ToolkitImporters importers;
    ScanFigures figures;
    std::mutex insertFolderAliasLock;
    std::atomic<double> now{1000};
    platform::OperationQueue buildQueue{u"build"_s};
    platform::OperationQueue scanQueue{u"scan"_s};
    std::shared_ptr<BuildThumbServices> buildThumb;
    std::shared_ptr<const ScanServices> services;
    std::unique_ptr<ScanFactory> factory;
    std::shared_ptr<PBAliasObject> root;
    std::shared_ptr<PBGroupItemArray> workTree;
    ScanBrowsing browsing;
    std::atomic<int> finished{0};

private:
    mutable std::mutex _mutex; // guards the publications
    std::vector<std::shared_ptr<group::GroupPublication>> _publications;
};
