#include "shell/files/ExportSheet.h"

#include "codec/encoding/PictureEncoder.h"
#include "platform/files/TypeIdentifiers.h"
#include "platform/program/LocalizedTexts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr int wholeQuality = 100;
constexpr int usualMaxSize = 2048;
constexpr int largestSize = 65535;

/// By TIFF's numbers of them (TIFF 6.0, tag 259, and its supplements).
struct Compression {
    int tag;
    QStringView text;
};
constexpr Compression compressions[] = {
    {1, u"ExportNoCompression"},
    {5, u"ExportLzw"},
    {8, u"ExportDeflate"},
    {32773, u"ExportPackBits"}};

} // namespace

ExportSheet::ExportSheet(
    const fileactions::ExportSettings& settings, std::int64_t count, QWidget& window)
    : QDialog(&window), _before(settings), _rows(new QFormLayout(this)), _type(new QComboBox),
      _quality(new QHBoxLayout), _saveQualitySlider(new QSlider(Qt::Horizontal)),
      _qualityValue(new QLabel), _tiffCompressionBtn(new QComboBox),
      _metadata(new QCheckBox(localizedString(u"ExportMetadata"))),
      _location(new QCheckBox(localizedString(u"ExportLocation"))),
      _isSizeLimited(new QCheckBox(localizedString(u"ExportLimitSize"))), _maxSize(new QSpinBox) {
    setObjectName(QStringLiteral("exportSheet"));
    setWindowTitle(
        count == 1 ? localizedString(u"ExportTitle") : localizedFormat(u"ExportTitleOf", {count}));
    setWindowModality(Qt::WindowModal);

    _type->setObjectName(QStringLiteral("exportType"));
    for (const QString& type : codec::writableTypes())
        _type->addItem(platform::TypeIdentifiers::description(type), type);
    _type->setCurrentIndex(std::max(0, _type->findData(settings.type)));
    _saveQualitySlider->setObjectName(QStringLiteral("exportQuality"));
    _saveQualitySlider->setRange(0, wholeQuality);
    _saveQualitySlider->setValue(static_cast<int>(std::lround(settings.quality * wholeQuality)));
    _saveQualitySlider->setMinimumWidth(180);
    _qualityValue->setMinimumWidth(
        _qualityValue->fontMetrics().horizontalAdvance(QStringLiteral("100 %")));
    _qualityValue->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    const auto showQuality = [this](int value) {
        _qualityValue->setText(localizedFormat(u"ExportPercent", {value}));
    };
    showQuality(_saveQualitySlider->value());
    connect(_saveQualitySlider, &QSlider::valueChanged, this, showQuality);
    for (const Compression& each : compressions)
        _tiffCompressionBtn->addItem(localizedString(each.text), each.tag);
    _tiffCompressionBtn->setCurrentIndex(
        std::max(0, _tiffCompressionBtn->findData(settings.tiffCompression)));
    _metadata->setObjectName(QStringLiteral("exportMetadata"));
    _metadata->setChecked(settings.hasMetadata);
    _location->setObjectName(QStringLiteral("exportLocation"));
    _location->setChecked(settings.hasLocation);
    _isSizeLimited->setObjectName(QStringLiteral("exportLimitSize"));
    _isSizeLimited->setChecked(settings.maxSize > 0);
    _maxSize->setObjectName(QStringLiteral("exportMaxSize"));
    _maxSize->setRange(1, largestSize);
    _maxSize->setValue(settings.maxSize > 0 ? settings.maxSize : usualMaxSize);
    _maxSize->setSuffix(localizedString(u"ExportPixels"));
    _maxSize->setAccessibleName(localizedString(u"ExportLimitSize"));
    _maxSize->setEnabled(_isSizeLimited->isChecked());
    connect(_isSizeLimited, &QCheckBox::toggled, _maxSize, &QWidget::setEnabled);
    connect(_metadata, &QCheckBox::toggled, _location, &QWidget::setEnabled);
    _location->setEnabled(_metadata->isChecked());

    _quality->addWidget(_saveQualitySlider, 1);
    _quality->addWidget(_qualityValue);
    auto* size = new QHBoxLayout;
    size->addWidget(_isSizeLimited);
    size->addWidget(_maxSize);
    size->addStretch(1);
    auto* label = new QLabel(localizedString(u"ExportQuality"));
    label->setBuddy(_saveQualitySlider);
    _rows->addRow(localizedString(u"ExportType"), _type);
    _rows->addRow(label, _quality);
    _rows->addRow(localizedString(u"ExportCompression"), _tiffCompressionBtn);
    _rows->addRow(QString(), _metadata);
    _rows->addRow(QString(), _location);
    _rows->addRow(QString(), size);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(localizedString(u"FileCancel"), QDialogButtonBox::RejectRole)
        ->setAutoDefault(false);
    QPushButton* go =
        buttons->addButton(localizedString(u"ExportContinue"), QDialogButtonBox::AcceptRole);
    go->setObjectName(QStringLiteral("exportContinue"));
    _rows->addRow(buttons);
    // Known as such from within the dialog only.
    go->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(_type, &QComboBox::currentIndexChanged, this, &ExportSheet::setSaveType);
    setSaveType();
    _type->setFocus();
}

QString ExportSheet::saveUti() const {
    return _type->currentData().toString();
}

void ExportSheet::setSaveType() {
    const QString type = saveUti();
    const bool hasQuality = codec::hasQuality(type);
    const bool isTiff = type == QStringLiteral("public.tiff");
    _rows->setRowVisible(_quality, hasQuality);
    _rows->setRowVisible(_tiffCompressionBtn, isTiff);
    const bool hasMetadata = codec::hasMetadata(type);
    _rows->setRowVisible(_metadata, hasMetadata);
    _rows->setRowVisible(_location, hasMetadata);
    adjustSize();
}

fileactions::ExportSettings ExportSheet::settings() const {
    fileactions::ExportSettings settings = _before;
    settings.type = saveUti();
    settings.quality = static_cast<double>(_saveQualitySlider->value()) / wholeQuality;
    settings.tiffCompression = _tiffCompressionBtn->currentData().toInt();
    settings.hasMetadata = _metadata->isChecked();
    settings.hasLocation = _location->isChecked();
    settings.maxSize = _isSizeLimited->isChecked() ? _maxSize->value() : 0;
    return settings;
}
