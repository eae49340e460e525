#include "shell/printing/PrintDialog.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"
#include "ui/WindowAlert.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGraphicsView>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <cmath>

using platform::localizedFormat;
using platform::localizedString;
using platform::MainLoop;

namespace {

constexpr int perPageChoices[] = {1, 2, 4, 6, 9, 12, 20, 30};
/// Of a sheet that shows what there is.
constexpr int usualSheet = 12;
constexpr double marginMillimetres = 10;
constexpr QSize firstSize(820, 680);
/// Of all pictures of the preview together.
constexpr double previewPixels = 24e6;
constexpr int smallestPreview = 128;
constexpr int largestPreview = 1400;
constexpr int mostPreviewPages = 30;
constexpr std::chrono::milliseconds repaintInterval{300};
/// Printers of this machine answer within that; a server that is gone takes minutes.
constexpr std::chrono::milliseconds longestWaitForPrinters{200};

/// Papers of printers and of photographs.
QList<QPageSize> papers() {
    const auto photograph = [](double width, double height, const QString& name) {
        return QPageSize(QSizeF(width, height), QPageSize::Millimeter, name);
    };
    return {
        QPageSize(QPageSize::A4),
        QPageSize(QPageSize::Letter),
        QPageSize(QPageSize::A3),
        QPageSize(QPageSize::A5),
        photograph(100, 150, localizedString(u"Paper10x15")),
        photograph(130, 180, localizedString(u"Paper13x18"))};
}

int usualPaper() {
    return QLocale().measurementSystem() == QLocale::ImperialUSSystem ? 1 : 0;
}

/// Of a file, and of what printers have in line.
QString documentName(const std::vector<PrintedPhotograph>& photographs) {
    return photographs.size() == 1 ? QFileInfo(photographs.front().name).completeBaseName()
                                   : localizedString(u"PrintPdfName");
}

class PrinterTarget final : public PrintTarget {
public:
    explicit PrinterTarget(std::shared_ptr<QPrinter> printer) : _printer(std::move(printer)) {}
    QPagedPaintDevice& device() override { return *_printer; }
    bool end(bool isWanted) override {
        if (!isWanted) _printer->abort();
        return isWanted && _printer->printerState() != QPrinter::Error;
    }

private:
    const std::shared_ptr<QPrinter> _printer;
};

QToolButton* pageButton(const QString& icon, QStringView text) {
    auto* button = new QToolButton;
    button->setIcon(Icons::named(icon));
    button->setToolTip(localizedString(text));
    button->setAccessibleName(button->toolTip());
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace

PrintDialog::PrintDialog(
    std::vector<PrintedPhotograph> photographs, PBImageImporterManager& importers, QWidget& window)
    : QDialog(&window), _photographs(std::move(photographs)), _importers(importers) {
    setWindowTitle(localizedString(u"PrintTitle"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeControls());
    _previewPlace = new QVBoxLayout;
    layout->addLayout(_previewPlace, 1);
    layout->addWidget(makePageButtons());
    layout->addWidget(makeButtons());
    _repaint.setSingleShot(true);
    _repaint.setInterval(repaintInterval);
    connect(&_repaint, &QTimer::timeout, this, [this] {
        if (!_job) updatePreview();
    });
    resize(firstSize.boundedTo(window.size()));
    makePrinter([this](const std::shared_ptr<QPrinter>& printer) { makePreview(printer); });
    pageDidChange();
    readPreview();
}

PrintDialog::~PrintDialog() {
    _queue.cancelAllOperations();
    _queue.waitUntilAllOperationsAreFinished();
}

void PrintDialog::makePrinter(const std::function<void(std::shared_ptr<QPrinter> printer)>& take) {
    using Printer = std::shared_ptr<QPrinter>;
    const auto made = _printers.call<Printer>(
        QStringLiteral("printers"), QString::number(++_printerCount), longestWaitForPrinters,
        [] { return std::make_shared<QPrinter>(QPrinter::HighResolution); }, take);
    if (made) take(*made);
}

void PrintDialog::makePreview(std::shared_ptr<QPrinter> printer) {
    _previewPrinter = std::move(printer);
    // It is shown, and not printed.
    _previewPrinter->setOutputFormat(QPrinter::PdfFormat);
    _preview = new QPrintPreviewWidget(_previewPrinter.get());
    _preview->setAccessibleName(localizedString(u"PrintPreview"));
    connect(_preview, &QPrintPreviewWidget::paintRequested, this, [this](QPrinter* paper) {
        paintPreview(paper);
    });
    connect(_preview, &QPrintPreviewWidget::previewChanged, this, [this] { pageDidChange(); });
    // The toolkit's own ground is of no theme.
    if (const auto* pages = _preview->findChild<QGraphicsView*>(); pages && pages->scene())
        pages->scene()->setBackgroundBrush(PBThemes::imageBrowserBackgroundColor());
    _previewPlace->addWidget(_preview);
    updatePreview();
}

void PrintDialog::updatePreview() {
    if (_preview) _preview->updatePreview();
}

QWidget* PrintDialog::makeControls() {
    auto* controls = new QWidget;
    auto* form = new QFormLayout(controls);
    form->setContentsMargins(0, 0, 0, 0);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    constexpr int boxLength = 18; // letters, of both boxes
    _perPage = new QComboBox;
    _perPage->setMinimumContentsLength(boxLength);
    _perPage->setObjectName(QStringLiteral("perPage"));
    for (const int count : perPageChoices) {
        _perPage->addItem(QLocale().toString(count), count);
        if (static_cast<std::size_t>(count) >= _photographs.size()) break;
    }
    const int usual = _perPage->findData(_photographs.size() == 1 ? 1 : usualSheet);
    _perPage->setCurrentIndex(usual < 0 ? _perPage->count() - 1 : usual);
    connect(_perPage, &QComboBox::currentIndexChanged, this, &PrintDialog::readPreview);
    form->addRow(localizedString(u"PrintPerPage"), _perPage);
    _paper = new QComboBox;
    _paper->setMinimumContentsLength(boxLength);
    _paper->setObjectName(QStringLiteral("paper"));
    for (const QPageSize& paper : papers())
        _paper->addItem(paper.name());
    _paper->setCurrentIndex(usualPaper());
    connect(_paper, &QComboBox::currentIndexChanged, this, &PrintDialog::updatePreview);
    form->addRow(localizedString(u"PrintPaper"), _paper);
    _names = new QCheckBox(localizedString(u"PrintNames"));
    _names->setChecked(_photographs.size() > 1);
    connect(_names, &QCheckBox::toggled, this, &PrintDialog::updatePreview);
    form->addRow(QString(), _names);
    _idleWidgets.push_back(controls);
    return controls;
}

QWidget* PrintDialog::makePageButtons() {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    _previous = pageButton(QStringLiteral("chevron-left"), u"PrintPreviousPage");
    _next = pageButton(QStringLiteral("chevron-right"), u"PrintNextPage");
    _page = new QLabel;
    const auto go = [this](int step) {
        if (_preview) _preview->setCurrentPage(_preview->currentPage() + step);
    };
    connect(_previous, &QToolButton::clicked, this, [go] { go(-1); });
    connect(_next, &QToolButton::clicked, this, [go] { go(1); });
    layout->addStretch();
    for (QWidget* widget : std::initializer_list<QWidget*>{_previous, _page, _next})
        layout->addWidget(widget);
    layout->addStretch();
    _idleWidgets.push_back(row);
    return row;
}

QWidget* PrintDialog::makeButtons() {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    _progress = new QProgressBar;
    _progress->setMaximum(static_cast<int>(_photographs.size()));
    _progress->setAccessibleName(localizedString(u"PrintProgress"));
    QSizePolicy policy = _progress->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    _progress->setSizePolicy(policy);
    _progress->hide();
    auto* buttons = new QDialogButtonBox; // in the order of the desktop
    QPushButton* cancel =
        buttons->addButton(localizedString(u"PrintCancel"), QDialogButtonBox::RejectRole);
    QPushButton* pdf =
        buttons->addButton(localizedString(u"PrintSavePdf"), QDialogButtonBox::ActionRole);
    _print = buttons->addButton(localizedString(u"PrintButton"), QDialogButtonBox::AcceptRole);
    cancel->setAutoDefault(false);
    pdf->setAutoDefault(false);
    _print->setDefault(true);
    _print->setFocus();
    connect(cancel, &QPushButton::clicked, this, &PrintDialog::reject);
    connect(pdf, &QPushButton::clicked, this, [this] { savePdf(); });
    connect(_print, &QPushButton::clicked, this, [this] { print(); });
    layout->addWidget(_progress, 1);
    layout->addWidget(buttons);
    _idleWidgets.push_back(pdf);
    _idleWidgets.push_back(_print);
    return row;
}

int PrintDialog::perPage() const {
    return _perPage->currentData().toInt();
}

QPageLayout PrintDialog::pageLayout() const {
    const QMarginsF margins(
        marginMillimetres, marginMillimetres, marginMillimetres, marginMillimetres);
    return {
        papers().at(_paper->currentIndex()), QPageLayout::Portrait, margins,
        QPageLayout::Millimeter};
}

PrintPlan PrintDialog::plan() const {
    return {.photographs = _photographs, .perPage = perPage(), .hasNames = _names->isChecked()};
}

void PrintDialog::readPreview() {
    if (_previewJob) _previewJob->cancel();
    const std::size_t count = std::min(
        _photographs.size(),
        static_cast<std::size_t>(mostPreviewPages) * static_cast<std::size_t>(perPage()));
    _previewPictures.assign(count, std::nullopt);
    const int side = std::clamp(
        static_cast<int>(std::sqrt(previewPixels / static_cast<double>(count))), smallestPreview,
        largestPreview);
    // What an earlier job still posts is for another number of pictures.
    auto job = std::make_shared<std::weak_ptr<platform::Operation>>();
    _previewJob = std::make_shared<PrintPreviewJob>(
        std::vector(
            _photographs.begin(), _photographs.begin() + static_cast<std::ptrdiff_t>(count)),
        side, _importers,
        [this, alive = std::weak_ptr(_alive), job](int index, const QImage& picture) {
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Common, [this, alive, job, index, picture] {
                if (!alive.expired() && job->lock() == _previewJob) didRead(index, picture);
            });
        });
    *job = _previewJob;
    _queue.addOperation(_previewJob);
    updatePreview();
}

void PrintDialog::didRead(int index, const QImage& picture) {
    _previewPictures[static_cast<std::size_t>(index)] = picture;
    // Painting all pages takes a while: not for each picture.
    const bool isLast = static_cast<std::size_t>(index) + 1 == _previewPictures.size();
    if (isLast)
        _repaint.start(0);
    else if (!_repaint.isActive())
        _repaint.start(repaintInterval);
}

void PrintDialog::paintPreview(QPrinter* printer) {
    QPageLayout layout = pageLayout();
    const PrintPage::Grid grid =
        PrintPage::bestGrid(layout.paintRect().size(), perPage(), _photographs);
    layout.setOrientation(grid.orientation);
    printer->setPageLayout(layout);
    QPainter painter(printer);
    if (!painter.isActive()) return;
    const double resolution = printer->resolution();
    const QRectF area(QPointF(), layout.paintRectPixels(printer->resolution()).size());
    for (std::size_t i = 0; i < _previewPictures.size(); ++i) {
        const int place = static_cast<int>(i) % perPage();
        if (place == 0 && i > 0) printer->newPage();
        PrintPage::paintPhotograph(
            painter, PrintPage::cellRect(grid, place, area, PrintSizes::gap * resolution),
            _photographs[i], _previewPictures[i],
            _names->isChecked() ? PrintSizes::nameLine * resolution : 0);
    }
}

void PrintDialog::pageDidChange() {
    if (!_page) return;
    const int shown = _preview ? _preview->pageCount() : 0;
    const int page = _preview ? _preview->currentPage() : 1;
    const int all = PrintPage::pageCount(std::ssize(_photographs), perPage());
    QString text = localizedFormat(u"PrintPage", {page, all});
    if (_preview && shown < all) text += localizedFormat(u"PrintPreviewPart", {shown});
    _page->setText(text);
    _previous->setEnabled(page > 1);
    _next->setEnabled(page < shown);
}

void PrintDialog::print() {
    _print->setEnabled(false);
    makePrinter([this](const std::shared_ptr<QPrinter>& printer) {
        _print->setEnabled(!_job);
        if (!_job) choosePrinter(printer);
    });
}

void PrintDialog::choosePrinter(const std::shared_ptr<QPrinter>& printer) {
    QPageLayout layout = pageLayout();
    layout.setOrientation(
        PrintPage::bestGrid(layout.paintRect().size(), perPage(), _photographs).orientation);
    printer->setPageLayout(layout);
    printer->setDocName(documentName(_photographs));
    auto* dialog = new QPrintDialog(printer.get(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOptions(
        QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize |
        QAbstractPrintDialog::PrintCollateCopies);
    connect(dialog, &QDialog::accepted, this, [this, printer] {
        // The dialog looks at it once more after this.
        MainLoop::instance()->post(
            MainLoop::Mode::Common, [this, alive = std::weak_ptr(_alive), printer] {
                if (!alive.expired()) start(std::make_unique<PrinterTarget>(printer));
            });
    });
    dialog->open();
}

void PrintDialog::savePdf() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    auto* dialog = new QFileDialog(
        this, localizedString(u"PrintSavePdfTitle"),
        QDir(folder).exists() ? folder : QDir::homePath(), localizedString(u"PrintPdfFiles"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("pdf"));
    dialog->selectFile(documentName(_photographs) + QStringLiteral(".pdf"));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        start(pdfTarget(path, pageLayout()));
    });
    dialog->open();
}

void PrintDialog::start(std::unique_ptr<PrintTarget> target) {
    platform::assertMainThread();
    if (_job) return;
    if (_previewJob) _previewJob->cancel();
    // What a job that was given up still posts concerns nobody.
    auto link = std::make_shared<std::weak_ptr<platform::Operation>>();
    const auto post = [this, alive = std::weak_ptr(_alive), link](auto call) {
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(MainLoop::Mode::Common, [this, alive, link, call] {
            if (!alive.expired() && link->lock() == _job) call(*this);
        });
    };
    _job = std::make_shared<PrintJob>(
        plan(), std::move(target), _importers,
        PrintJob::Calls{
            .progress =
                [post](int done) {
                    post([done](PrintDialog& dialog) { dialog._progress->setValue(done); });
                },
            .ended =
                [post](const PrintJob::Result& result) {
                    post([result](PrintDialog& dialog) { dialog.didEnd(result); });
                }});
    *link = _job;
    setWorking(true);
    _queue.addOperation(_job);
}

void PrintDialog::didEnd(const PrintJob::Result& result) {
    _job.reset();
    setWorking(false);
    if (!result.isWritten) {
        readPreview(); // which may not have come to its end
        return showWindowAlert(
            *this, localizedString(u"PrintFailed"), localizedString(u"PrintFailedDetails"));
    }
    if (result.unreadable == 0) return accept();
    showWindowAlert(
        *this,
        result.unreadable == 1 ? localizedString(u"PrintedUnreadable_1")
                               : localizedFormat(u"PrintedUnreadable", {result.unreadable}),
        localizedString(u"PrintedUnreadableDetails"), [this] { accept(); });
}

void PrintDialog::setWorking(bool isWorking) {
    for (QWidget* widget : _idleWidgets)
        widget->setEnabled(!isWorking);
    _progress->setValue(0);
    _progress->setVisible(isWorking);
}

void PrintDialog::reject() {
    if (!_job) return QDialog::reject();
    // It ends behind the window; one that has not begun never will.
    _job->cancel();
    _job.reset();
    setWorking(false);
    readPreview();
}
