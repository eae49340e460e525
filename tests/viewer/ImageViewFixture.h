#pragma once

#include "group/FolderPaths.h"
#include "group/PBImageFileItem.h"
#include "image/PBPreloadThumbnailOperation.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "support/FakeFiles.h"
#include "support/Mouse.h"
#include "support/Paints.h"
#include "viewer/ImageViewHost.h"
#include "viewer/PBImageView.h"

/// The real view, without a display, on files of the test's own and with its clock. Its
/// surroundings are the test: a list of photographs, and what was asked of them.
struct PBImageViewTest : ::testing::Test, ThumbnailLoader, group::FolderPaths, ImageViewHost {
    PBImageViewTest() {
        view.installEventFilter(&paints);
        view.resize(800, 600);
    }
    QImage loadThumbnail(const PBImageFileItem&) override { return thumbnail; }
    QString pathOfFolderId(qint64) const override { return folder; }
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
        view.showImage();
        view.tryPreloadNextOrPrevImage();
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
    void updateZoomSizeSlider() override {}
    void revalidateToolbar() override { ++validations; }
    bool canOpenPath(const QString& path) const override { return path.endsWith(u".jpg"); }
    void openDroppedPaths(const QStringList& paths) override { asked += paths; }
    bool isSlideShowMode() const override { return isSlideShow; }

    std::shared_ptr<PBImageFileItem>
    add(const QString& name, const support::FakeFile& file = {{600, 400}}) {
        files.set(name, file);
        auto item = PBImageFileItem::imageFileItemWithId(std::ssize(items) + 1, 1, name, 1000, 1);
        item->setImageSize(QSizeF(file.size));
        items.push_back(item);
        return item;
    }
    void show() {
        view.show();
        view.showImage();
        QApplication::processEvents();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {}, bool isHeld = false) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, {}, isHeld);
        QApplication::sendEvent(&view, &event);
    }
    /// A large one at actual size.
    void showActual() {
        add(u"one.jpg"_s, {{2000, 2000}});
        show();
        EXPECT_TRUE(isSharp());
        press(Qt::Key_Z);
        EXPECT_TRUE(rests());
    }
    const ImagePlacement& placement() { return view.imageGeometry().placement(); }
    QColor colorAt(int x, int y) { return view.grab().toImage().pixelColor(x, y); }
    /// Two of them, and the first is shown.
    void showRedAndGreen(QSize first = {600, 400}) {
        add(u"one.jpg"_s, {first});
        add(u"two.jpg"_s, {{600, 400}, Qt::green});
        show();
    }
    [[nodiscard]] bool isSharp() {
        return support::spinUntil(
            [this] { return view.painted() > PBImageView::Painted::Thumbnail; });
    }
    /// Nothing is loaded any more.
    [[nodiscard]] bool isLoaded() {
        return support::spinUntil([this] { return manager.operationCount() == 0; });
    }
    /// What moves comes to its end.
    [[nodiscard]] bool rests() {
        return support::spinUntil([this] { return view.isAtRest(); });
    }

    double now = 100;
    QString folder = u"/photos"_s;
    QImage thumbnail = support::filled({30, 20}, Qt::yellow);
    support::FakeFiles files;
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    std::int64_t index = 0;
    QStringList asked;
    int validations = 0;
    bool isSlideShow = false;
    bool isBackward = false; ///< preloading goes that way
    support::FakeImporters importers{files};
    PBLoadImageManager manager;
    PBImageBufferManager buffer{PBImageBufferManager::Environment{.loadImageManager = manager}};
    support::Paints paints;
    PBImageView view{
        *this, ImageViewServices{manager, buffer, importers, *this, *this}, nullptr,
        [this] { return now += 0.01; }};
};
