#pragma once

#include "codec/PBImageImporterManager.h"
#include "group/FolderPaths.h"
#include "group/PBImageFileItem.h"
#include "image/PBPreloadThumbnailOperation.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/Mutex.h"
#include "support/Images.h"
#include "support/Mouse.h"
#include "support/Support.h"
#include "viewer/ImageViewHost.h"
#include "viewer/PBImageView.h"

#include <QPaintEvent>

#include <thread>

/// A file as its importer reads it: a picture of its own colour, or none.
struct FakeFile {
    QSize size{60, 40};
    QColor color = Qt::red;
    bool isDamaged = false;
};

/// Files by name; decoding waits as long as the test wants. Any thread.
class FakeFiles {
public:
    void set(const QString& name, const FakeFile& file) {
        const platform::Lock lock(_mutex);
        _files[name] = file;
    }
    FakeFile get(const QString& path) const {
        const platform::Lock lock(_mutex);
        return _files.at(path.section(u'/', -1));
    }
    void setHeld(bool isHeld) { _isHeld = isHeld; }
    [[nodiscard]] bool isHeld() const { return _isHeld; }

private:
    mutable platform::Mutex _mutex;
    std::map<QString, FakeFile> _files VELMORA_GUARDED_BY(_mutex);
    std::atomic<bool> _isHeld = false;
};

class FakeImporter final : public PBImageImporterProtocol {
public:
    FakeImporter(const FakeFiles& files, const QString& path) : _files(files), _path(path) {}
    std::optional<PBDictionary> propertiesAtIndex(std::size_t) override { return PBDictionary(); }
    QImage createImageWithMaxSize(unsigned maxSize, std::size_t, std::stop_token stop) override {
        while (_files.isHeld() && !stop.stop_requested())
            std::this_thread::yield();
        const FakeFile file = _files.get(_path);
        if (stop.stop_requested() || file.isDamaged) return {};
        const QSize size = maxSize == 0 ? file.size
                                        : file.size.scaled(
                                              static_cast<int>(maxSize), static_cast<int>(maxSize),
                                              Qt::KeepAspectRatio);
        return support::filled(size, file.color);
    }
    std::size_t imageCount() override { return _files.get(_path).isDamaged ? 0 : 1; }
    QString utiType() override { return u"public.jpeg"_s; }

private:
    const FakeFiles& _files;
    const QString _path;
};

/// The surroundings of the view: a list of photographs, and what was asked of them.
struct FakeImageHost final : ImageViewHost {
    std::shared_ptr<PBImageFileItem> at(std::int64_t place) const {
        return place >= 0 && place < std::ssize(items) ? items.at(static_cast<std::size_t>(place))
                                                       : nullptr;
    }
    std::shared_ptr<PBImageFileItem> focusImageFileItem() const override { return at(index); }
    std::int64_t focusIndex() const override { return at(index) ? index : -1; }
    std::shared_ptr<PBImageFileItem> nextImageFileItem() const override { return at(index + 1); }
    std::shared_ptr<PBImageFileItem> prevImageFileItem() const override { return at(index - 1); }
    std::vector<IndexedImage> preloadImageFileItemWithCount(int count) const override {
        std::vector<IndexedImage> neighbours;
        const std::int64_t first = isBackward ? index - count : index + 1;
        for (std::int64_t next = first; next < first + count; ++next)
            if (at(next)) neighbours.push_back({at(next), next});
        return neighbours;
    }
    std::vector<std::shared_ptr<PBImageFileItem>> visibleImageFileItems() const override {
        return items;
    }
    void moveTo(std::int64_t target) {
        if (!at(target) || target == index) return;
        index = target;
        view->showImage();
        view->tryPreloadNextOrPrevImage();
    }
    void navigateToNextImage() override { moveTo(index + 1); }
    void navigateToPreviousImage() override { moveTo(index - 1); }
    void navigateToFirstImage() override { moveTo(0); }
    void navigateToLastImage() override { moveTo(std::ssize(items) - 1); }
    void rotateLeft() override { asked += u"left"_s; }
    void rotateRight() override { asked += u"right"_s; }
    void toggleFlag() override { asked += u"flag"_s; }
    void leaveLargeView() override { asked += u"leave"_s; }
    void showContextMenu(const QPoint&) override { asked += u"menu"_s; }
    void updateZoomSizeSlider() override { ++sliderUpdates; }
    void revalidateToolbar() override { ++validations; }
    bool canOpenPath(const QString& path) const override { return path.endsWith(u".jpg"); }
    void openDroppedPaths(const QStringList& paths) override { asked += paths; }
    bool isSlideShowMode() const override { return isSlideShow; }

    PBImageView* view = nullptr;
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    std::int64_t index = 0;
    QStringList asked;
    int sliderUpdates = 0;
    int validations = 0;
    bool isSlideShow = false;
    bool isBackward = false; ///< preloading goes that way
};

/// The real view, without a display, on files of the test's own and with its clock.
struct PBImageViewTest : ::testing::Test, ThumbnailLoader, group::FolderPaths {
    PBImageViewTest() {
        host.view = &view;
        view.installEventFilter(&paints);
        view.resize(800, 600);
    }
    QImage loadThumbnail(const PBImageFileItem&) override { return thumbnail; }
    QString pathOfFolderId(qint64) const override { return folder; }

    std::shared_ptr<PBImageFileItem> add(const QString& name, const FakeFile& file) {
        files.set(name, file);
        auto item =
            PBImageFileItem::imageFileItemWithId(std::ssize(host.items) + 1, 1, name, 1000, 1);
        item->setImageSize(QSizeF(file.size));
        host.items.push_back(item);
        return item;
    }
    void show() {
        view.show();
        view.showImage();
        QApplication::processEvents();
    }
    QColor colorAt(int x, int y) { return view.grab().toImage().pixelColor(x, y); }
    [[nodiscard]] bool isSharp() {
        return support::spinUntil([this] {
            return view.painted() == PBImageView::Painted::FitIn ||
                   view.painted() == PBImageView::Painted::Original;
        });
    }
    /// What moves comes to its end.
    [[nodiscard]] bool rests() {
        return support::spinUntil([this] { return view.isAtRest(); });
    }

    /// What of the view was painted.
    struct Paints final : QObject {
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                region += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
        QRegion take() {
            for (int step = 0; step < 3; ++step)
                QApplication::processEvents();
            return std::exchange(region, {});
        }
        QRegion region;
    };

    double now = 100;
    QString folder = u"/photos"_s;
    QImage thumbnail;
    FakeFiles files;
    FakeImageHost host;
    PBImageImporterManager importers{{PBImageImporterClass{
        .typeIdentifiers = [] { return QStringList{u"public.jpeg"_s}; },
        .initWithImagePath =
            [this](const QString& path) { return std::make_unique<FakeImporter>(files, path); },
        .propertiesOfImages = {}}}};
    PBLoadImageManager manager;
    PBImageBufferManager buffer{PBImageBufferManager::Environment{.loadImageManager = manager}};
    Paints paints;
    PBImageView view{
        host, ImageViewServices{manager, buffer, importers, *this, *this}, nullptr,
        [this] { return now += 0.01; }};
};
