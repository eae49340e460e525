#include "shell/files/PBFileProgressWindowController.h"

#include "core/Texts.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>

#include <algorithm>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr int imageSize = 64; // points
constexpr int sheetWidth = 460;
constexpr int wholeProgress = 100;

QString sizeText(std::int64_t bytes) {
    return PBUtilities::stringWithFileSize(static_cast<quint64>(bytes));
}

/// By the bytes where they are known: of one large file the number says nothing.
int percentOf(const fileactions::FileProgress& progress) {
    if (progress.totalBytes > 0)
        return static_cast<int>(
            std::clamp<std::int64_t>(progress.bytes * wholeProgress / progress.totalBytes, 0, 100));
    return progress.total > 0 ? static_cast<int>(progress.number * wholeProgress / progress.total)
                              : 0;
}

} // namespace

PBFileProgressWindowController::PBFileProgressWindowController(QWidget& window)
    : _sheet(new QDialog(&window)), progressLabel(new QLabel), filePathLabel(new QLabel),
      _bytesLabel(new QLabel), imageView(new QLabel), progressIndicator(new QProgressBar) {
    _sheet->setObjectName(QStringLiteral("PBFileProgressWindowController"));
    _sheet->setWindowTitle(localizedString(u"FileProgressTitle"));
    _sheet->setWindowModality(Qt::WindowModal);
    imageView->setFixedSize(imageSize, imageSize);
    imageView->setAlignment(Qt::AlignCenter);
    progressLabel->setObjectName(QStringLiteral("progressLabel"));
    QFont bold = progressLabel->font();
    bold.setBold(true);
    progressLabel->setFont(bold);
    filePathLabel->setTextFormat(Qt::PlainText);
    // A long path must not widen the sheet.
    filePathLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    progressIndicator->setRange(0, wholeProgress);
    progressIndicator->setTextVisible(false);
    auto* buttons = new QDialogButtonBox;
    const QPushButton* cancel =
        buttons->addButton(localizedString(u"FileCancel"), QDialogButtonBox::RejectRole);
    connect(cancel, &QPushButton::clicked, _sheet, &QDialog::reject);
    connect(_sheet, &QDialog::finished, this, [this] {
        if (!_isEnding) this->cancel();
    });

    auto* layout = new QGridLayout(_sheet);
    layout->setColumnMinimumWidth(0, imageSize);
    layout->setColumnStretch(1, 1);
    layout->setHorizontalSpacing(16);
    layout->addWidget(imageView, 0, 0, 4, 1, Qt::AlignTop);
    layout->addWidget(progressLabel, 0, 1);
    layout->addWidget(filePathLabel, 1, 1);
    layout->addWidget(progressIndicator, 2, 1);
    layout->addWidget(_bytesLabel, 3, 1);
    layout->addWidget(buttons, 4, 0, 1, 2);
    _sheet->setFixedWidth(sheetWidth);
}

PBFileProgressWindowController::~PBFileProgressWindowController() {
    _isEnding = true;
    delete _sheet;
}

void PBFileProgressWindowController::begin() {
    platform::assertMainThread();
    _isEnding = false;
    _sheet->open();
}

void PBFileProgressWindowController::takeDown() {
    _isEnding = true;
    _sheet->hide();
}

bool PBFileProgressWindowController::isShown() const {
    return _sheet->isVisible();
}

void PBFileProgressWindowController::end(ReturnCode code) {
    platform::assertMainThread();
    _isEnding = true;
    _sheet->done(code);
}

void PBFileProgressWindowController::cancel() {
    _isEnding = true;
    _sheet->hide();
    Q_EMIT cancelled();
}

void PBFileProgressWindowController::show(
    const QString& text, const fileactions::FileProgress& progress) {
    progressLabel->setText(text);
    const QString path = platform::harmlessText(QFile::decodeName(progress.path));
    filePathLabel->setText(filePathLabel->fontMetrics().elidedText(
        path, Qt::ElideMiddle, std::max(filePathLabel->width(), sheetWidth / 2)));
    filePathLabel->setToolTip(path);
    progressIndicator->setValue(percentOf(progress));
    _bytesLabel->setText(
        progress.totalBytes > 0
            ? localizedFormat(
                  u"FileProgressBytes", {sizeText(std::min(progress.bytes, progress.totalBytes)),
                                         sizeText(progress.totalBytes)})
            : QString());
}

void PBFileProgressWindowController::setImage(const QPixmap& image) {
    if (image.isNull()) {
        imageView->setPixmap(
            _sheet->style()->standardIcon(QStyle::SP_FileIcon).pixmap(imageSize, imageSize));
        return;
    }
    const double ratio = _sheet->devicePixelRatioF();
    QPixmap scaled = image.scaled(
        QSize(imageSize, imageSize) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    imageView->setPixmap(scaled);
}
