#include "browser/PBImageBrowserTipView.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr QSize pictureSize(112, 112);
constexpr std::chrono::milliseconds indicatorDelay(250);
constexpr QSize buttonSize(200, 32);
constexpr QStringView remedyTexts[] = {u"ClearSearch", u"ShowAll", u"IncludeSubfolders"};

QLabel* centredLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

} // namespace

PBImageBrowserTipView::PBImageBrowserTipView(QWidget* parent)
    : QWidget(parent), _picture(centredLabel(this)), _title(centredLabel(this)),
      _or(centredLabel(this)), _hint(centredLabel(this)), _suggestion(new QPushButton(this)),
      _button(new QPushButton(localizedString(u"AddFolder"), this)),
      _indicator(new QProgressBar(this)) {
    setAutoFillBackground(true);
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.35);
    _title->setFont(large);
    _or->setText(localizedString(u"Or"));
    _hint->setText(localizedString(u"DragDropFolder"));
    for (QPushButton* button : {_suggestion, _button})
        button->setMinimumSize(buttonSize);
    for (std::size_t remedy = 0; remedy < _remedyButtons.size(); ++remedy) {
        auto* button = new QPushButton(localizedString(remedyTexts[remedy]), this);
        button->setObjectName(remedyTexts[remedy].toString());
        button->setMinimumSize(buttonSize);
        connect(button, &QPushButton::clicked, this, [this, remedy] {
            Q_EMIT remedyRequested(static_cast<Remedy>(remedy));
        });
        _remedyButtons[remedy] = button;
    }
    _suggestion->setObjectName(QStringLiteral("addSuggestedFolder"));
    _button->setObjectName(QStringLiteral("addFolder"));
    _indicator->setRange(0, 0);
    _indicator->setTextVisible(false);
    _indicator->setFixedSize(180, 6);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->setSpacing(10);
    layout->addStretch(4);
    layout->addWidget(_picture);
    layout->addWidget(_title);
    layout->addSpacing(4);
    layout->addWidget(_suggestion, 0, Qt::AlignHCenter);
    layout->addWidget(_button, 0, Qt::AlignHCenter);
    for (QPushButton* button : _remedyButtons)
        layout->addWidget(button, 0, Qt::AlignHCenter);
    layout->addWidget(_or);
    layout->addWidget(_hint);
    layout->addWidget(_indicator, 0, Qt::AlignHCenter);
    layout->addStretch(5);

    connect(_button, &QPushButton::clicked, this, &PBImageBrowserTipView::addFolderRequested);
    connect(_suggestion, &QPushButton::clicked, this, [this] {
        Q_EMIT suggestedFolderRequested(_suggestedFolder);
    });
    _indicatorDelay.setSingleShot(true);
    _indicatorDelay.setInterval(indicatorDelay);
    connect(&_indicatorDelay, &QTimer::timeout, _indicator, &QWidget::show);
    setTipKind(0);
    updateColors();
}

std::int64_t PBImageBrowserTipView::kindFor(const State& state) {
    if (state.hasGroups) return 0;
    if (!state.hasRoots) return 1;
    if (!state.hasSelection) return 2;
    return state.isScanning ? 4 : 3;
}

void PBImageBrowserTipView::setTipKind(std::int64_t tipKind) {
    platform::assertMainThread();
    if (tipKind == _tipKind) return;
    _tipKind = tipKind;
    // Hidden with the focus, a button would hand it to whatever comes next in the window.
    // Not the program's: the window may not be the active one yet.
    const QWidget* focus = window()->focusWidget();
    if (_heir && focus && isAncestorOf(focus)) _heir->setFocus(Qt::OtherFocusReason);
    setVisible(tipKind != 0);
    updateTitle();
    updateButtons();
    updateColors();
    // The indicator changes after the present event, so that a scan that ends within it shows none.
    if (auto* loop = platform::MainLoop::instance()) {
        loop->cancelPreviousPerformRequestsWithTarget(this);
        loop->performAfterDelay(
            this, "updateIndicator", std::chrono::milliseconds(0), [self = QPointer(this)] {
                if (self) self->updateIndicator();
            });
    } else {
        updateIndicator();
    }
}

void PBImageBrowserTipView::setReason(const Reason& reason) {
    platform::assertMainThread();
    _reason = reason;
    updateTitle();
    updateButtons();
}

void PBImageBrowserTipView::updateTitle() {
    static constexpr QStringView titles[] = {
        u"", u"SelectAFolder", u"No Folder Selected", u"No Photo", u""};
    const bool known = _tipKind >= 0 && _tipKind < std::ssize(titles);
    QString title = known ? localizedString(titles[_tipKind]) : QString();
    if (_tipKind == 3 && !_reason.text.isEmpty()) title = _reason.text;
    _title->setText(title);
    _title->setVisible(!title.isEmpty());
    _picture->setVisible(!title.isEmpty());
}

void PBImageBrowserTipView::setSuggestedFolder(const QString& path) {
    platform::assertMainThread();
    _suggestedFolder = path;
    const qsizetype end = path.lastIndexOf(u'/');
    _suggestion->setText(localizedFormat(u"AddSuggestedFolder", {path.sliced(end + 1)}));
    _suggestion->setToolTip(path);
    updateButtons();
}

void PBImageBrowserTipView::updateButtons() {
    const bool isFirst = _tipKind == 1;
    const bool hasSuggestion = isFirst && !_suggestedFolder.isEmpty();
    _button->setVisible(isFirst);
    _or->setVisible(isFirst);
    _hint->setVisible(isFirst);
    _suggestion->setVisible(hasSuggestion);
    for (std::size_t remedy = 0; remedy < _remedyButtons.size(); ++remedy) {
        const bool helps = std::ranges::find(_reason.remedies, static_cast<Remedy>(remedy)) !=
                           _reason.remedies.end();
        _remedyButtons[remedy]->setVisible(_tipKind == 3 && helps);
    }
    // Return presses what is most likely wanted.
    QPushButton* likely = hasSuggestion ? _suggestion : _button;
    if (isFirst && isVisible() && !likely->hasFocus()) likely->setFocus(Qt::OtherFocusReason);
}

void PBImageBrowserTipView::updateIndicator() {
    // A search scans anew at each key: what is there in a moment needs no indicator.
    if (_tipKind == 4) {
        _indicatorDelay.start();
    } else {
        _indicatorDelay.stop();
        _indicator->hide();
    }
}

void PBImageBrowserTipView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void PBImageBrowserTipView::updateColors() {
    const PBThemes::Colors& colors = PBThemes::colors();
    QColor faint = colors.icon;
    faint.setAlphaF(0.55F);
    _picture->setPixmap(
        Icons::pixmap(QStringLiteral("photographs"), pictureSize, devicePixelRatioF(), faint));
    QPalette own = palette();
    // Over a folder it looks like the sheet that it stands in for.
    const QColor ground = _tipKind == 1 ? colors.browser : colors.sheet;
    if (own.color(QPalette::Window) == ground) return;
    own.setColor(QPalette::Window, ground);
    setPalette(own);
    QPalette likely = _suggestion->palette();
    likely.setColor(QPalette::Button, colors.accent);
    likely.setColor(QPalette::ButtonText, Qt::white);
    _suggestion->setPalette(likely);
    _suggestion->setIcon(QIcon(Icons::pixmap(
        QStringLiteral("folder-pictures"), QSize(16, 16), devicePixelRatioF(), Qt::white)));
    for (QLabel* label : {_or, _hint}) {
        QPalette quiet = label->palette();
        quiet.setColor(QPalette::WindowText, colors.secondaryText);
        label->setPalette(quiet);
    }
}
