#include "shell/panes/MessagePane.h"

#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

MessagePane::MessagePane(const QString& message, const QString& icon, QWidget* parent)
    : QWidget(parent), _icon(icon), _picture(new QLabel(this)),
      _message(new QLabel(message, this)) {
    _picture->setAlignment(Qt::AlignHCenter);
    _picture->setVisible(!icon.isEmpty());
    _message->setWordWrap(true);
    _message->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 22, 18, 12);
    layout->setSpacing(12);
    layout->addWidget(_picture);
    layout->addWidget(_message);
    layout->addStretch(1);
    updateColors();
}

void MessagePane::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), PBThemes::colors().sidebar);
}

void MessagePane::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void MessagePane::updateColors() {
    QPalette palette = _message->palette();
    if (palette.color(QPalette::WindowText) == PBThemes::colors().secondaryText) return;
    palette.setColor(QPalette::WindowText, PBThemes::colors().secondaryText);
    _message->setPalette(palette);
    if (!_icon.isEmpty()) {
        QColor color = PBThemes::colors().secondaryText;
        color.setAlphaF(0.45F);
        _picture->setPixmap(Icons::pixmap(_icon, QSize(40, 40), devicePixelRatioF(), color));
    }
    update();
}
