#include "shell/StatusBarView.h"

#include "platform/LocalizedTexts.h"
#include "shell/WorkProgressView.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
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

constexpr ButtonRow buttonRows[] = {
    {PaneLayout::Pane::SideBar, u"split_left", u"ShowSidebar", u"HideSidebar"},
    {PaneLayout::Pane::Folder, u"split_top", u"ShowFolder", u"HideFolder"},
    {PaneLayout::Pane::Group, u"split_bottom", u"ShowGroup", u"HideGroup"},
    {PaneLayout::Pane::Info, u"split_right", u"ShowInfo", u"HideInfo"},
};

} // namespace

StatusBarView::StatusBarView(PaneLayout& panes, QWidget* parent)
    : QWidget(parent), _panes(panes), _itemCountLabel(new QLabel(this)),
      _progressView(new WorkProgressView(this)) {
    setFixedHeight(26);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 1, 6, 0);
    layout->setSpacing(2);
    for (const ButtonRow& row : buttonRows) {
        auto* button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setIconSize(QSize(16, 16));
        button->setFocusPolicy(Qt::TabFocus);
        connect(
            button, &QToolButton::clicked, this, [this, pane = row.pane] { _panes.toggle(pane); });
        _buttons.emplace_back(button, row.pane);
        if (row.pane == PaneLayout::Pane::Info) {
            layout->addStretch(1);
            layout->addWidget(_itemCountLabel);
            layout->addStretch(1);
            layout->addWidget(_progressView);
        }
        layout->addWidget(button);
    }
    connect(&_panes, &PaneLayout::changed, this, &StatusBarView::updateStatusBarBtn);
    updateStatusBarBtn();
    setItemCount(0);
}

void StatusBarView::setItemCount(qint64 shown) {
    _itemCount = shown;
    updateItemCount();
}

void StatusBarView::setSelectCount(qint64 selected) {
    _selectCount = selected;
    updateItemCount();
}

void StatusBarView::setProgress(WorkProgress& progress) {
    _progressView->setProgress(progress);
}

void StatusBarView::updateItemCount() {
    const QString all = QLocale().toString(_itemCount);
    _itemCountLabel->setText(
        _itemCount == 0 ? localizedString(u"PhotographCount_0")
        : _selectCount > 0
            ? localizedFormat(u"PhotographCountSelected", {QLocale().toString(_selectCount), all})
        : _itemCount == 1 ? localizedString(u"PhotographCount_1")
                          : localizedFormat(u"PhotographCount", {all}));
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

void StatusBarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    painter.fillRect(QRect(0, 0, width(), 1), PBThemes::colors().separator);
}
