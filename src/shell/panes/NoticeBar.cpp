#include "shell/panes/NoticeBar.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr QSize iconSize(20, 20);
constexpr double smallFont = 0.92;

QLabel* label(QWidget* parent) {
    auto* made = new QLabel(parent);
    made->setTextFormat(Qt::PlainText);
    made->setWordWrap(true);
    return made;
}

} // namespace

NoticeBar::NoticeBar(QWidget* parent)
    : QWidget(parent), _icon(new QLabel(this)), _text(label(this)), _details(label(this)),
      _action(new QPushButton(this)), _close(new QPushButton(this)) {
    QFont strong = font();
    strong.setWeight(QFont::DemiBold);
    _text->setFont(strong);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * smallFont);
    _details->setFont(small);
    _details->setTextInteractionFlags(Qt::TextSelectableByMouse);
    _close->setText(platform::localizedString(u"NoticeDismiss"));
    for (QPushButton* button : {_action, _close})
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(_text);
    texts->addWidget(_details);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 9);
    layout->setSpacing(10);
    layout->addWidget(_icon, 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
    layout->addWidget(_action);
    layout->addWidget(_close);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    connect(_close, &QPushButton::clicked, this, &NoticeBar::dismiss);
    connect(_action, &QPushButton::clicked, this, [this] {
        if (_notices.empty()) return;
        const auto perform = _notices.front().perform;
        if (perform) perform();
    });
    updateColors();
    showFirst();
}

void NoticeBar::tell(const Notice& notice) {
    platform::assertMainThread();
    if (_closed.contains(notice.key)) return;
    const auto known = std::ranges::find(_notices, notice.key, &Notice::key);
    if (known == _notices.end()) {
        _notices.push_back(notice);
    } else {
        *known = notice;
    }
    showFirst();
}

void NoticeBar::withdraw(const QString& key) {
    platform::assertMainThread();
    std::erase_if(_notices, [&key](const Notice& notice) { return notice.key == key; });
    _closed.removeAll(key);
    showFirst();
}

QString NoticeBar::text() const {
    return _notices.empty() ? QString() : _notices.front().text;
}

void NoticeBar::dismiss() {
    if (_notices.empty()) return;
    _closed.append(_notices.front().key);
    _notices.erase(_notices.begin());
    showFirst();
}

void NoticeBar::showFirst() {
    setVisible(!_notices.empty());
    if (_notices.empty()) return;
    const Notice& notice = _notices.front();
    _text->setText(notice.text);
    _details->setText(notice.details);
    _details->setVisible(!notice.details.isEmpty());
    _action->setText(notice.action);
    _action->setVisible(!notice.action.isEmpty());
    setAccessibleName(notice.text);
    setAccessibleDescription(notice.details);
    update();
}

void NoticeBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    QColor tint = PBThemes::colors().star;
    tint.setAlphaF(0.16F);
    painter.fillRect(rect(), tint);
    painter.fillRect(QRect(0, height() - 1, width(), 1), PBThemes::colors().separator);
}

void NoticeBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void NoticeBar::updateColors() {
    const QColor text = PBThemes::colors().text;
    for (QLabel* shown : {_text, _details}) {
        QPalette palette = shown->palette();
        if (palette.color(QPalette::WindowText) == text) continue;
        palette.setColor(QPalette::WindowText, text);
        shown->setPalette(palette);
    }
    _icon->setPixmap(Icons::pixmap(
        QStringLiteral("warning"), iconSize, devicePixelRatioF(), PBThemes::colors().star));
    update();
}
