// Layout of a million images, painting while a sheet of 100,000 is scrolled, and what the view
// keeps in memory: against the plain arithmetic of the same sizes, and against a bare copy of the
// same pixels. An argument, "layout", "scrolling", "swap" or "memory", runs that part alone.

#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserView.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/OperationQueue.h"
#include "support/Ratio.h"
#include "ui/PBThemes.h"

#include <QApplication>
#include <QBackingStore>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include <malloc.h>

namespace {

constexpr int rounds = 5;

/// Milliseconds that this thread has spent, whatever else the machine does.
double threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

template <typename Work>
double threadTimeOf(Work&& work) {
    const double start = threadTime();
    work();
    return threadTime() - start;
}

PBGroupItemArray makeTree(int groups, int images) {
    PBGroupItemArray tree;
    std::mt19937 random(1);
    qint64 id = 0;
    for (int group = 0; group < groups; ++group) {
        tree.push_back(PBGroupItem::groupItemWithParent(
            nullptr, 5, PBValue(QStringLiteral("/photos/%1").arg(group))));
        for (int image = 0; image < images / groups; ++image) {
            ++id;
            auto item = PBImageFileItem::imageFileItemWithId(
                id, 1, QStringLiteral("DSC%1.jpg").arg(id), 1234567, 1);
            item->setImageSize(random() % 4 == 0 ? QSizeF(2000, 3000) : QSizeF(3000, 2000));
            tree.back()->sortAddImageFileItem(std::move(item), 0, false);
        }
    }
    return tree;
}

std::vector<PBGroupItem*> leavesOf(const PBGroupItemArray& tree) {
    std::vector<PBGroupItem*> leaves;
    for (const auto& node : tree)
        leaves.push_back(node.get());
    return leaves;
}

bool measureLayout(const std::string& groupsText, int groups) {
    const auto nameOf = [&](const char* part) { return part + (", " + groupsText); };
    constexpr int images = 1000000;
    const PBGroupItemArray tree = makeTree(groups, images);
    BrowserLeafList leaves;
    leaves.setLeafGroupItemArray(leavesOf(tree));
    BrowserLayout layout;
    layout.setLeaves(&leaves);
    layout.setWidth(1200, 0);
    const auto plainFloor = [&] {
        double sum = 0;
        leaves.forEachImage(
            FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
                sum += item->imageSize().height();
            });
        bench::keep(sum);
    };
    bench::printRatio(nameOf("sheet's height / all sizes").c_str(), rounds, plainFloor, [&] {
        layout.invalidate();
        bench::keep(layout.contentHeight());
    });
    layout.invalidate();
    const double near = threadTimeOf([&] { bench::keep(layout.visibleRange(0, 1000).end.item); });
    bool met = bench::printFigure(nameOf("first visible range").c_str(), near, "ms", 30);
    double first = 1e9;
    for (int round = 0; round < rounds; ++round) {
        layout.invalidate();
        first = std::min(first, threadTimeOf([&] {
                             bench::keep(layout.contentHeight());
                             bench::keep(layout.visibleRange(0, 1000).end.item);
                         }));
    }
    met &= bench::printFigure(nameOf("first range and height").c_str(), first, "ms", 30);
    const double height = layout.contentHeight();
    std::mt19937 random(2);
    double worst = 0;
    double total = 0;
    constexpr int looks = 2000;
    for (int look = 0; look < looks; ++look) {
        const double line = static_cast<double>(random()) / 4294967296.0 * height;
        const double time =
            threadTimeOf([&] { bench::keep(layout.visibleRange(line, line + 1000).end.item); });
        worst = std::max(worst, time);
        total += time;
    }
    bench::printFigure(nameOf("later ranges, mean").c_str(), total / looks, "ms", 0.1);
    met &= bench::printFigure(nameOf("later ranges, worst").c_str(), worst, "ms", 0.1);
    return met;
}

class NoThumbnails final : public ThumbnailLoader {
public:
    QImage loadThumbnail(const PBImageFileItem&) override { return {}; }
};

class BenchServices final : public BrowserServices, public group::FolderPaths {
public:
    ThumbnailLoader& thumbnailLoader() override { return _none; }
    ThumbnailLoader& preloadThumbnailLoader() override { return _none; }
    platform::OperationQueue& preloadThumbnailOperationQueue() override { return _preload; }
    platform::OperationQueue& buildThumbOperationQueue() override { return _build; }
    std::unique_ptr<PBImageImporterProtocol> imageImporter(const PBImageFileItem&) override {
        return nullptr;
    }
    PBThumbnailBufferManager& thumbnailBufferManager() override { return _buffer; }
    const group::FolderPaths& folderPaths() const override { return *this; }
    QString tagWithTagId(qint64) const override { return {}; }
    bool isLargeView() const override { return false; }
    QString pathOfFolderId(qint64) const override { return {}; }

private:
    NoThumbnails _none;
    PBThumbnailBufferManager _buffer{200};
    platform::OperationQueue _build{QStringLiteral("build")};
    platform::OperationQueue _preload{QStringLiteral("preload")};
};

struct Frames {
    double median = 0;
    double worst = 0;
};

Frames summary(std::vector<double> times) {
    std::ranges::sort(times);
    return {times[times.size() / 2], times.back()};
}

bool measureScrolling() {
    constexpr int images = 100000;
    constexpr int steps = 600;
    constexpr double step = 40;
    const PBGroupItemArray tree = makeTree(100, images);
    // Those that the steps pass have pictures of their own, so that each is scaled anew.
    constexpr std::size_t passed = 1600;
    std::vector<QImage> pictures;
    for (int index = 0; index < 64; ++index) {
        QImage picture(
            index % 4 == 0 ? QSize(171, 256) : QSize(256, 171),
            QImage::Format_ARGB32_Premultiplied);
        picture.fill(QColor::fromHsv(index * 5, 120, 200));
        pictures.push_back(picture);
    }
    std::size_t next = 0;
    for (const auto& node : tree)
        for (const auto& item : node->imageFiles()) {
            ++next;
            const QImage& picture = pictures[next % pictures.size()];
            item->setThumbnailRef(next < passed ? picture.copy() : picture);
        }
    BenchServices services;
    PBImageBrowserScrollView scrollView(services);
    PBImageBrowserView view(scrollView, services);
    scrollView.resize(1920, 1080);
    scrollView.show();
    view.setLeafGroupItemArray(leavesOf(tree));
    view.reloadData();
    QApplication::processEvents();

    std::vector<double> frames;
    for (int index = 0; index < steps; ++index)
        frames.push_back(threadTimeOf([&] {
            scrollView.setPbScrollPoint({0, index * step});
            QApplication::processEvents();
        }));
    const Frames scrolled = summary(frames);

    // The pixels of a frame: those of the whole widget, copied from a picture.
    QImage target(view.size(), QImage::Format_RGB32);
    QImage source(view.size(), QImage::Format_RGB32);
    source.fill(Qt::gray);
    frames.clear();
    for (int index = 0; index < steps; ++index)
        frames.push_back(threadTimeOf([&] { QPainter(&target).drawImage(0, 0, source); }));
    const Frames copied = summary(frames);
    bool met = bench::printFigure("scrolling 100,000, median frame", scrolled.median, "ms", 4);
    met &= bench::printFigure("scrolling 100,000, worst frame", scrolled.worst, "ms", 12);
    met &= bench::printFigure(
        "scrolling 100,000, median / copy of the window", scrolled.median / copied.median, "times",
        2.5);
    return met;
}

/// As the data source does it, up to the painted window. The tree that goes is destroyed elsewhere.
bool measureSwap() {
    constexpr int images = 100000;
    const PBGroupItemArray tree = makeTree(100, images);
    BenchServices services;
    PBImageBrowserScrollView scrollView(services);
    PBImageBrowserView view(scrollView, services);
    scrollView.resize(1920, 1080);
    scrollView.show();
    view.setLeafGroupItemArray(leavesOf(tree));
    view.reloadData();
    scrollView.setPbScrollPoint({0, 300000});
    QApplication::processEvents();

    double swap = 1e9;
    double painted = 1e9;
    for (int round = 0; round < rounds; ++round) {
        PBGroupItemArray copy;
        for (const auto& node : tree)
            copy.push_back(node->copyWithParent(nullptr));
        swap = std::min(swap, threadTimeOf([&] {
                            for (const auto& node : copy)
                                node->updateDataGroupItem();
                            view.setLeafGroupItemArray(leavesOf(copy));
                            view.reloadData();
                        }));
        painted = std::min(painted, threadTimeOf([] { QApplication::processEvents(); }));
        for (const auto& node : tree)
            node->updateDataGroupItem();
        view.setLeafGroupItemArray(leavesOf(tree));
    }
    bool met = bench::printFigure("swap of a tree of 100,000", swap, "ms", 16);
    met &=
        bench::printFigure("swap of a tree of 100,000, with its paint", swap + painted, "ms", 16);
    return met;
}

double allocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// What there is more once a view shows a tree that was there before, and once it was scrolled
/// through. Columns are few, so that rows are many.
bool measureMemory(int images, int width) {
    const PBGroupItemArray tree = makeTree(1000, images);
    BenchServices services;
    PBImageBrowserScrollView scrollView(services);
    scrollView.resize(width, 1080);
    PBImageBrowserView view(scrollView, services);
    scrollView.show();
    QApplication::processEvents(); // pixels of the window, fonts
    const double before = allocatedBytes();
    view.setLeafGroupItemArray(leavesOf(tree));
    view.reloadData();
    QApplication::processEvents();
    const double shown = allocatedBytes() - before;
    const double height = scrollView.maxScrollPoint().y();
    constexpr int looks = 400;
    for (int look = 0; look <= looks; ++look) {
        scrollView.setPbScrollPoint({0, height * look / looks});
        QApplication::processEvents();
    }
    const double scrolled = allocatedBytes() - before;
    const std::string name = "view's memory, " + std::to_string(images) + " images, columns: " +
                             std::to_string(view.browserLayout().cellColumn());
    bool met = bench::printFigure((name + ", shown").c_str(), shown / images, "bytes", 32);
    met &= bench::printFigure((name + ", all seen").c_str(), scrolled / images, "bytes", 32);
    return met;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const platform::MainLoop loop;
    PBThemes::apply(PBThemes::Scheme::Light);
    const QByteArray part(argc > 1 ? argv[1] : "");
    const auto isWanted = [&](const char* name) { return part.isEmpty() || part == name; };
    bool met = true;
    if (isWanted("layout")) {
        met &= measureLayout("million in 1,000 groups", 1000);
        met &= measureLayout("million in one group", 1);
    }
    if (isWanted("scrolling")) met &= measureScrolling();
    if (isWanted("swap")) met &= measureSwap();
    if (isWanted("memory")) {
        met &= measureMemory(100000, 1920);
        met &= measureMemory(1000000, 1920);
        met &= measureMemory(1000000, 200);
    }
    return met ? 0 : 1;
}
