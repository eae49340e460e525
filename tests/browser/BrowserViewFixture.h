#pragma once

#include "BrowserTree.h"

#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserView.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/OperationQueue.h"
#include "support/Images.h"
#include "support/Mouse.h"
#include "support/Paints.h"
#include "ui/PBModalTextField.h"
#include "ui/PBScroller.h"

#include <QContextMenuEvent>
#include <QHash>
#include <QPainter>

/// Thumbnails by file id; notes which were asked for.
struct FakeThumbnails final : ThumbnailLoader {
    QImage loadThumbnail(const PBImageFileItem& item) override {
        const platform::Lock lock(mutex);
        asked.push_back(item.fileId());
        return pictures.value(item.fileId());
    }
    QList<qint64> takeAsked() {
        const platform::Lock lock(mutex);
        return std::exchange(asked, {});
    }
    void insert(qint64 fileId, const QImage& picture) {
        const platform::Lock lock(mutex);
        pictures.insert(fileId, picture);
    }
    platform::Mutex mutex;
    QList<qint64> asked VELMORA_GUARDED_BY(mutex);
    QHash<qint64, QImage> pictures VELMORA_GUARDED_BY(mutex);
};

/// A build of the build queue, as far as the browser can see.
struct FakeBuild final : platform::Operation {
    using Operation::Operation;

protected:
    void main() override {}
};

struct FakeServices final : BrowserServices, group::FolderPaths {
    FakeServices() { buildQueue.setSuspended(true); }
    ThumbnailLoader& thumbnailLoader() override { return thumbnails; }
    ThumbnailLoader& preloadThumbnailLoader() override { return preloaded; }
    platform::OperationQueue& preloadThumbnailOperationQueue() override { return preloadQueue; }
    platform::OperationQueue& buildThumbOperationQueue() override { return buildQueue; }
    std::unique_ptr<PBImageImporterProtocol> imageImporter(const PBImageFileItem& item) override {
        return makeImporter ? makeImporter(item) : nullptr;
    }
    PBThumbnailBufferManager& thumbnailBufferManager() override { return buffer; }
    const group::FolderPaths& folderPaths() const override { return *this; }
    QString tagWithTagId(qint64) const override { return {}; }
    QString folderTitle(const QString& path) const override {
        return rootTitle.isEmpty() ? path : rootTitle + path.sliced(u"/photos"_s.size());
    }
    bool isLargeView() const override { return largeView; }
    QString pathOfFolderId(qint64) const override { return u"/photos"_s; }

    FakeThumbnails thumbnails;
    FakeThumbnails preloaded;
    std::function<std::unique_ptr<PBImageImporterProtocol>(const PBImageFileItem&)> makeImporter;
    PBThumbnailBufferManager buffer{200};
    bool largeView = false;
    QString rootTitle; ///< of "/photos"; empty for the path itself
    platform::OperationQueue buildQueue{u"build"_s};
    platform::OperationQueue preloadQueue{u"preload"_s}; // ends before the loaders
};

inline QImage plain(QColor color, QSize size = {300, 200}) {
    return support::filled(size, color, QImage::Format_ARGB32_Premultiplied);
}

/// The left half and the right one.
inline QImage redAndBlue(QSize size) {
    QImage image = plain(Qt::red, size);
    QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), Qt::blue);
    return image;
}

/// The real view, without a display, over a tree of a test's own; driven by events like those of
/// Qt.
struct BrowserViewTest : ::testing::Test {
    using View = PBImageBrowserView;
    using Index = PBImageBrowserIndex;

    void show(std::initializer_list<int> counts) {
        tree = std::make_unique<BrowserTree>(counts);
        view = std::make_unique<View>(scrollView, services);
        services.buffer.setBrowserOrder(&view->browserOrder());
        scrollView.setClock([this] { return now += tick; });
        view->installEventFilter(&paints);
        scrollView.resize(600, 500);
        scrollView.show();
        showLeaves(tree->leaves());
        QApplication::processEvents(); // the scroller appears
    }
    void showLeaves(const std::vector<PBGroupItem*>& leaves) {
        view->showLeafGroupItemArray(leaves);
    }
    ~BrowserViewTest() override {
        services.buffer.setBrowserOrder(nullptr);
        view.reset();
    }
    void resizeThumbnails(double size) {
        view->setThumbnailSize(size);
        view->reloadData();
    }
    void on(auto signal, auto function) {
        QObject::connect(view.get(), signal, view.get(), function);
    }

    QPoint at(Index index) { return view->widgetRect(index).center() - QPoint(0, 30); }
    QPoint nameAt(Index index) {
        const QRectF cell = view->widgetRect(index);
        return view->browserLayout().fileNameRectWithCellRect(cell).center().toPoint();
    }
    void send(QEvent::Type type, QPoint point, Qt::KeyboardModifiers modifiers = {}) {
        support::sendMouse(*view, type, point, modifiers);
    }
    void click(QPoint point, Qt::KeyboardModifiers modifiers = {}) {
        send(QEvent::MouseButtonPress, point, modifiers);
        send(QEvent::MouseButtonRelease, point, modifiers);
    }
    void askForMenu(QContextMenuEvent::Reason reason, QPoint point) {
        QContextMenuEvent event(reason, point, view->mapToGlobal(point));
        QApplication::sendEvent(view.get(), &event);
    }
    /// Whether the widget took it.
    bool press(
        QWidget& widget, int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = {},
        bool isAutoRepeat = false) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text, isAutoRepeat);
        QApplication::sendEvent(&widget, &event);
        return event.isAccepted();
    }
    void finishMotion() {
        now += 1;
        scrollView.motion().tick();
    }
    QImage picture(double ratio = 1) {
        QImage image((view->size().toSizeF() * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        view->render(&image);
        return image;
    }
    /// The field in which a name is edited; nullptr if none is.
    PBModalTextField* nameField() const {
        for (auto* each : view->findChildren<PBModalTextField*>())
            if (!each->isHidden()) return each;
        return nullptr;
    }
    double position() const { return scrollView.pbScrollPoint().y(); }

    double now = 10;
    double tick = 0; ///< what each look at the clock takes
    QStringList told;
    support::Paints paints;
    FakeServices services;
    PBImageBrowserScrollView scrollView{services};
    std::unique_ptr<BrowserTree> tree;
    std::unique_ptr<View> view;
};
