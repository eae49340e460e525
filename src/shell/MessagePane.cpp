#include "shell/MessagePane.h"

#include "ui/PBThemes.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

MessagePane::MessagePane(const QString& message, QWidget* parent)
    : QWidget(parent), _message(new QLabel(message, this)) {
    _message->setWordWrap(true);
    _message->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 22, 18, 12);
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
    update();
}
