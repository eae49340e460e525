#include "viewer/controller/ImageStatusBarView.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include <chrono>
#include <cmath>
#include <utility>

using platform::localizedString;
using Pane = ImageViewPanes::Pane;

namespace {

constexpr int barHeight = 26;
/// Of the knob, for each of the 100 that the scale is told in.
constexpr int stepsPerUnit = 10;
/// More than the half of what the middle catches, or keys and wheel could never leave it.
constexpr int sliderStep = 6 * stepsPerUnit;

} // namespace

ImageStatusBarView::ImageStatusBarView(ImageViewPanes& panes, QWidget* parent)
    : QWidget(parent), _panes(panes), _showHidePhotoBinBtn(makePaneButton(Pane::PhotoBin)),
      _showHideInfoBtn(makePaneButton(Pane::Info)), _infoLabel(new QLabel),
      _zoomSlider(new QSlider(Qt::Horizontal)), _zoomLabel(new QLabel) {
    setFixedHeight(barHeight);
    _infoLabel->setObjectName(QStringLiteral("imageInfo"));
    _infoLabel->setAlignment(Qt::AlignCenter);
    _infoLabel->setTextFormat(Qt::PlainText);
    _zoomLabel->setObjectName(QStringLiteral("imageZoom"));
    _zoomLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    _zoomSlider->setObjectName(QStringLiteral("zoom"));
    _zoomSlider->setRange(0, 100 * stepsPerUnit);
    _zoomSlider->setSingleStep(sliderStep);
    _zoomSlider->setPageStep(2 * sliderStep);
    _zoomSlider->setFixedWidth(140);
    _zoomSlider->setFocusPolicy(Qt::TabFocus);
    const QString name = localizedString(u"ImageZoom");
    _zoomSlider->setToolTip(name);
    _zoomSlider->setAccessibleName(name);
    connect(_zoomSlider, &QSlider::valueChanged, this, [this](int value) {
        Q_EMIT zoomSlide(static_cast<double>(value) / stepsPerUnit);
    });
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 1, 6, 0);
    layout->setSpacing(6);
    // Equal sides keep the name in the middle of the window.
    auto* left = new QHBoxLayout;
    left->addWidget(_showHidePhotoBinBtn);
    left->addStretch(1);
    auto* right = new QHBoxLayout;
    right->addStretch(1);
    right->addWidget(_zoomSlider);
    right->addWidget(_zoomLabel);
    right->addWidget(_showHideInfoBtn);
    _infoLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addLayout(left, 1);
    layout->addWidget(_infoLabel, 2);
    layout->addLayout(right, 1);
    _newsTimer.setSingleShot(true);
    connect(&_newsTimer, &QTimer::timeout, this, [this] { showNews({}); });
    connect(&_panes, &ImageViewPanes::changed, this, &ImageStatusBarView::updateStatusBarBtn);
    updateStatusBarBtn();
    setZoom(50, 100, false);
}

QToolButton* ImageStatusBarView::makePaneButton(Pane pane) {
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setIconSize(QSize(16, 16));
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this, [this, pane] { Q_EMIT paneToggled(pane); });
    return button;
}

void ImageStatusBarView::updateStatusBarBtn() {
    const auto show = [](QToolButton& button, const QString& image, const QString& text) {
        button.setIcon(Icons::named(image));
        button.setToolTip(text);
        button.setAccessibleName(text);
    };
    const bool hasBin = _panes.isShown(Pane::PhotoBin);
    show(
        *_showHidePhotoBinBtn,
        hasBin ? QStringLiteral("split_bottom_s") : QStringLiteral("split_bottom_n"),
        localizedString(hasBin ? u"HidePhotoBin" : u"ShowPhotoBin"));
    const bool hasInfo = _panes.isShown(Pane::Info);
    show(
        *_showHideInfoBtn,
        hasInfo ? QStringLiteral("split_right_s") : QStringLiteral("split_right_n"),
        localizedString(hasInfo ? u"HideInfo" : u"ShowInfo"));
}

void ImageStatusBarView::setInfo(const QString& text) {
    if (std::exchange(_info, text) != text) showNews({});
}

void ImageStatusBarView::tell(const QString& sentence) {
    constexpr std::chrono::seconds shownFor(8);
    showNews(sentence);
    _newsTimer.start(shownFor);
}

void ImageStatusBarView::showNews(const QString& sentence) {
    _news = sentence;
    _newsTimer.stop();
    _infoLabel->setToolTip(_news.isEmpty() ? _info : _news);
    elideInfo();
}

void ImageStatusBarView::elideInfo() {
    _infoLabel->setText(_infoLabel->fontMetrics().elidedText(
        _news.isEmpty() ? _info : _news, Qt::ElideMiddle, _infoLabel->width()));
}

void ImageStatusBarView::setZoom(double slider, int percent, bool isEnabled) {
    const QSignalBlocker blocker(_zoomSlider);
    _zoomSlider->setEnabled(isEnabled);
    _zoomSlider->setValue(static_cast<int>(std::lround(slider * stepsPerUnit)));
    _zoomLabel->setText(isEnabled ? QStringLiteral("%1%").arg(percent) : QString());
    _zoomLabel->setFixedWidth(_zoomLabel->fontMetrics().horizontalAdvance(QStringLiteral("0000%")));
}

void ImageStatusBarView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layout()->activate();
    elideInfo();
}

void ImageStatusBarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    painter.fillRect(QRect(0, 0, width(), 1), PBThemes::colors().separator);
}
