#include "shell/panes/StatusBarView.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/panes/ThumbnailSizeSlider.h"
#include "shell/panes/WorkProgressView.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QStyle>
#include <QToolButton>

using platform::localizedFormat;
using platform::localizedString;

namespace {

struct ButtonRow {
    PaneLayout::Pane pane;
    QStringView image;
    QStringView show; // keys of the texts
    QStringView hide;
};

constexpr int barHeight = 26;

constexpr ButtonRow buttonRows[] = {
    {PaneLayout::Pane::SideBar, u"split_left", u"ShowSidebar", u"HideSidebar"},
    {PaneLayout::Pane::Folder, u"split_top", u"ShowFolder", u"HideFolder"},
    {PaneLayout::Pane::Group, u"split_bottom", u"ShowGroup", u"HideGroup"},
    {PaneLayout::Pane::Info, u"split_right", u"ShowInfo", u"HideInfo"},
};

QHBoxLayout* addSide(QHBoxLayout& layout) {
    auto* side = new QHBoxLayout;
    side->setSpacing(2);
    layout.addLayout(side, 1);
    return side;
}

} // namespace

StatusBarView::StatusBarView(PaneLayout& panes, QWidget* parent)
    : QWidget(parent), _panes(panes), _itemCountLabel(new QLabel(this)),
      _progressView(new WorkProgressView(this)),
      _thumbnailSizeSlider(new ThumbnailSizeSlider(this)), _newsLabel(new QLabel(this)) {
    setFixedHeight(barHeight);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 1, 6, 0);
    // Equal sides keep the count in the middle of the window.
    auto* left = addSide(*layout);
    layout->addWidget(_itemCountLabel);
    auto* right = addSide(*layout);
    for (std::size_t row = 0; row < std::size(buttonRows) - 1; ++row)
        addPaneButton(*left, row);
    left->addSpacing(6);
    left->addWidget(_newsLabel, 1);
    _newsLabel->setObjectName(QStringLiteral("statusNews"));
    // A long sentence takes no room from the others.
    _newsLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    _newsTimer.setSingleShot(true);
    connect(&_newsTimer, &QTimer::timeout, this, [this] { showNews({}); });
    right->addStretch(1);
    right->addWidget(_progressView);
    right->addSpacing(6);
    right->addWidget(_thumbnailSizeSlider);
    right->addSpacing(6);
    addPaneButton(*right, std::size(buttonRows) - 1);
    // As they stand, from the left to the right.
    QWidget::setTabOrder(_buttons[_buttons.size() - 2].first, _thumbnailSizeSlider);
    QWidget::setTabOrder(_thumbnailSizeSlider, _buttons.back().first);
    connect(&_panes, &PaneLayout::changed, this, &StatusBarView::updateStatusBarBtn);
    connect(&_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& height) {
        setFixedHeight(height.toInt());
    });
    connect(&_animation, &QAbstractAnimation::finished, this, &StatusBarView::finishAnimation);
    updateStatusBarBtn();
    updateCounts();
}

void StatusBarView::addPaneButton(QHBoxLayout& layout, std::size_t row) {
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setIconSize(QSize(16, 16));
    button->setFocusPolicy(Qt::TabFocus);
    const PaneLayout::Pane pane = buttonRows[row].pane;
    connect(button, &QToolButton::clicked, this, [this, pane] { Q_EMIT paneToggled(pane); });
    _buttons.emplace_back(button, pane);
    layout.addWidget(button);
}

void StatusBarView::setItemCount(qint64 shown) {
    _itemCount = shown;
    updateCounts();
}

void StatusBarView::setSelectCount(qint64 selected) {
    _selectCount = selected;
    updateCounts();
}

void StatusBarView::tell(const QString& sentence) {
    constexpr std::chrono::seconds shownFor(8);
    showNews(sentence);
    _newsTimer.start(shownFor);
}

void StatusBarView::showNews(const QString& sentence) {
    _news = sentence;
    _newsLabel->setToolTip(_news);
    elideNews();
}

void StatusBarView::elideNews() {
    _newsLabel->setText(
        _newsLabel->fontMetrics().elidedText(_news, Qt::ElideRight, _newsLabel->width()));
}

void StatusBarView::setProgress(WorkProgress& progress) {
    _progressView->setProgress(progress);
}

void StatusBarView::updateCounts() {
    const QString all = QLocale().toString(_itemCount);
    _itemCountLabel->setText(
        _itemCount == 0 ? localizedString(u"PhotographCount_0")
        : _selectCount > 0
            ? localizedFormat(u"PhotographCountSelected", {QLocale().toString(_selectCount), all})
        : _itemCount == 1 ? localizedString(u"PhotographCount_1")
                          : localizedFormat(u"PhotographCount", {all}));
}

void StatusBarView::setShown(bool shown, bool animated) {
    if (_isShown == shown) {
        if (!animated && _animation.state() == QAbstractAnimation::Running) {
            _animation.stop();
            finishAnimation();
        }
        return;
    }
    _isShown = shown;
    _animation.stop();
    const int duration =
        animated ? style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) : 0;
    if (duration <= 0 || !window()->isVisible()) return finishAnimation();
    _animation.setStartValue(isVisible() ? height() : 0);
    _animation.setEndValue(shown ? barHeight : 0);
    _animation.setDuration(duration);
    setFixedHeight(_animation.startValue().toInt());
    setVisible(true);
    _animation.start();
}

void StatusBarView::finishAnimation() {
    setFixedHeight(barHeight);
    setVisible(_isShown);
}

void StatusBarView::updateStatusBarBtn() {
    for (std::size_t i = 0; i < _buttons.size(); ++i) {
        const ButtonRow& row = buttonRows[i];
        const bool shown = _panes.isShown(row.pane);
        const QString text = localizedString(shown ? row.hide : row.show);
        QToolButton* button = _buttons[i].first;
        button->setIcon(Icons::named(
            row.image.toString().append(shown ? QStringView(u"_s") : QStringView(u"_n"))));
        button->setToolTip(text);
        button->setAccessibleName(text);
    }
}

void StatusBarView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layout()->activate();
    elideNews();
}

void StatusBarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    painter.fillRect(QRect(0, 0, width(), 1), PBThemes::colors().separator);
}
