#include "codec/PBImageImporterManager.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/printing/PrintJob.h"
#include "support/Images.h"
#include "support/Support.h"

#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>

namespace {

using PrintPage::Grid;
constexpr auto upright = QPageLayout::Portrait;
constexpr auto lying = QPageLayout::Landscape;

PrintedPhotograph photograph(QSizeF size, double angle = 0, const QString& path = {}) {
    return {.path = path, .name = u"IMG.jpg"_s, .imageSize = size, .angle = angle};
}

/// What a PDF file says of its pages and pictures.
struct Pdf {
    explicit Pdf(const QByteArray& bytes) {
        const QString text = QString::fromLatin1(bytes);
        static const QRegularExpression box(u"/MediaBox \\[([^\\]]*)\\]"_s);
        for (const auto& match : box.globalMatch(text)) {
            const QStringList numbers = match.captured(1).split(u' ', Qt::SkipEmptyParts);
            pages += QSizeF(numbers.value(2).toDouble(), numbers.value(3).toDouble());
        }
        // Pictures are JPEG files within.
        for (qsizetype at = 0; (at = bytes.indexOf("\xff\xd8\xff", at)) >= 0; ++at)
            pictures += QImage::fromData(bytes.mid(at), "JPEG");
    }
    QList<QSizeF> pages; ///< in points
    QList<QImage> pictures;
};

struct PrintTest : testing::Test {
    PrintJob::Result print(
        const PrintPlan& plan, const std::function<void(int)>& progress = [](int) {}) {
        PrintJob::Result result;
        platform::OperationQueue queue(u"test"_s);
        const QPageLayout layout(
            QPageSize(QPageSize::A4), upright, QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
        job = std::make_shared<PrintJob>(
            plan, pdfTarget(file, layout), importers,
            PrintJob::Calls{
                .progress = progress, .ended = [&](const PrintJob::Result& of) { result = of; }});
        queue.addOperation(job);
        queue.waitUntilAllOperationsAreFinished();
        return result;
    }
    QString picture(const QString& name, QSize size) {
        const QString path = folder.filePath(name);
        support::writePicture(path, size);
        return path;
    }

    QTemporaryDir folder;
    const QString file = folder.filePath(u"out.pdf"_s);
    PBImageImporterManager importers;
    std::shared_ptr<PrintJob> job;
};

TEST_F(PrintTest, pagesLieAsTheirPhotographsBecomeLargest) {
    const QSizeF paper(190, 277);
    const struct {
        int perPage;
        QSizeF size;
        double angle;
        Grid grid;
    } rows[] = {
        {1, {300, 200}, 0, {lying, 1, 1}},
        {1, {300, 200}, 90, {upright, 1, 1}},
        {1, {200, 300}, 0, {upright, 1, 1}},
        {1, {200, 300}, -90, {lying, 1, 1}},
        {1, {}, 0, {lying, 1, 1}},
        {2, {300, 200}, 0, {upright, 1, 2}},
        {2, {300, 200}, 270, {lying, 2, 1}},
        {4, {300, 200}, 180, {lying, 2, 2}},
        {12, {300, 300}, 0, {upright, 3, 4}},
        {2, {3000, 100}, 0, {lying, 1, 2}}};
    for (const auto& row : rows) {
        const std::vector photographs(3, photograph(row.size, row.angle));
        const Grid grid = PrintPage::bestGrid(paper, row.perPage, photographs);
        EXPECT_EQ(grid, row.grid) << row.perPage << ' ' << row.angle << ": " << grid.orientation
                                  << ' ' << grid.columns << 'x' << grid.rows;
    }
    // Row by row, with the gap between them only.
    const QRectF area(0, 0, 320, 210);
    EXPECT_EQ(PrintPage::cellRect({lying, 3, 2}, 2, area, 10), QRectF(220, 0, 100, 100));
    EXPECT_EQ(PrintPage::cellRect({lying, 3, 2}, 3, area, 10), QRectF(0, 110, 100, 100));
    EXPECT_EQ(PrintPage::pageCount(12, 12), 1);
    EXPECT_EQ(PrintPage::pageCount(13, 12), 2);
}

TEST_F(PrintTest, photographsAreTurnedAsTheyAreSeenAndKeepTheirShape) {
    QImage stored = support::filled({30, 20}, Qt::blue);
    stored.setPixelColor(0, 0, Qt::red); // the corner at the left and the top
    const auto painted = [](double angle, const std::optional<QImage>& picture,
                            double nameHeight = 0) {
        QImage page = support::filled({90, 90}, Qt::white);
        QPainter painter(&page);
        PrintPage::paintPhotograph(
            painter, QRectF(page.rect()), photograph({30, 20}, angle), picture, nameHeight);
        return page;
    };
    const auto isRed = [&](double angle, int x, int y) {
        const QColor color = painted(angle, stored).pixelColor(x, y);
        return color.red() > 200 && color.blue() < 60;
    };
    // 90 x 60 with 15 free above and below; turned, 60 x 90.
    EXPECT_TRUE(isRed(0, 0, 15) && isRed(180, 89, 74));
    EXPECT_TRUE(isRed(90, 15, 89)) << "counter-clockwise: to the left, below";
    EXPECT_TRUE(isRed(-90, 74, 0));
    EXPECT_EQ(painted(0, stored).pixelColor(45, 12), QColor(Qt::white));
    EXPECT_EQ(painted(90, stored).pixelColor(12, 45), QColor(Qt::white));
    // The name has its line below the picture, which makes room for it.
    EXPECT_NE(painted(90, stored), painted(90, stored, 20));
    EXPECT_EQ(painted(90, stored, 20).pixelColor(45, 69).blue(), 255);
    const QImage unreadable;
    EXPECT_NE(painted(0, unreadable), painted(90, unreadable)) << "of the photograph's shape";
    EXPECT_NE(painted(0, unreadable), painted(0, std::nullopt)) << "not read yet";
}

TEST_F(PrintTest, aPdfHasThePagesWithEachPictureNoLargerThanPaperShows) {
    PrintPlan plan{.photographs = {}, .perPage = 2, .hasNames = true};
    for (const QString& name : {u"a.jpg"_s, u"b.png"_s, u"c.jpg"_s})
        plan.photographs.push_back(photograph({600, 300}, 0, picture(name, {600, 300})));
    plan.photographs.push_back(photograph({6000, 3000}, 0, picture(u"large.jpg"_s, {6000, 3000})));
    plan.photographs.push_back(photograph({30, 20}, 0, folder.filePath(u"gone.jpg"_s)));
    std::vector<int> told;
    const PrintJob::Result result = print(plan, [&](int done) { told.push_back(done); });
    EXPECT_TRUE(result.isWritten);
    EXPECT_EQ(result.unreadable, 1);
    EXPECT_EQ(told, (std::vector{1, 2, 3, 4, 5}));
    const Pdf pdf(support::readFile(file));
    ASSERT_EQ(pdf.pages.size(), 3);
    for (const QSizeF& page : pdf.pages)
        EXPECT_LT(page.width(), page.height()) << "wide ones above each other";
    // In whichever order the objects stand.
    QList<QSize> sizes;
    for (const QImage& image : pdf.pictures)
        sizes += image.size();
    EXPECT_EQ(sizes.removeAll(QSize(600, 300)), 3);
    ASSERT_EQ(sizes.size(), 1);
    const int width = sizes.front().width();
    EXPECT_TRUE(width >= 2200 && width <= 2400) << width << ", of 7.5 inches";

    plan.photographs.resize(1);
    plan.perPage = 1;
    EXPECT_TRUE(print(plan).isWritten);
    const Pdf single(support::readFile(file));
    ASSERT_EQ(single.pages.size(), 1);
    EXPECT_GT(single.pages[0].width(), single.pages[0].height());
}

TEST_F(PrintTest, whatIsCancelledOrCannotBeWrittenLeavesWhatWasThere) {
    support::writeFile(file, "before");
    PrintPlan plan;
    plan.photographs.assign(4, photograph({40, 30}, 0, picture(u"a.jpg"_s, {40, 30})));
    int last = 0;
    const PrintJob::Result result = print(plan, [&](int done) {
        last = done;
        if (done == 2) job->cancel();
    });
    EXPECT_FALSE(result.isWritten);
    EXPECT_LE(last, 3);
    EXPECT_EQ(support::readFile(file), "before");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), (QStringList{u"a.jpg"_s, u"out.pdf"_s}));
    const QPageLayout layout = QPdfWriter(file).pageLayout();
    support::writeFile(file, "before");
    EXPECT_FALSE(pdfTarget(folder.filePath(u"none/out.pdf"_s), layout)->end(true));
    EXPECT_EQ(support::readFile(file), "before");
}

} // namespace
