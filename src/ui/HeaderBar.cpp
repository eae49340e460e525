#include "ui/HeaderBar.h"

#include "ui/PBThemes.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

HeaderBar::HeaderBar(const QString& title, Line line, QWidget* parent)
    : QWidget(parent), _line(line), _title(new QLabel(title, this)),
      _layout(new QHBoxLayout(this)) {
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.92);
    small.setWeight(QFont::DemiBold);
    _title->setFont(small);
    _layout->setContentsMargins(10, 0, 6, 0);
    _layout->setSpacing(2);
    _layout->addWidget(_title);
    _layout->addStretch(1);
    setFixedHeight(28);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    updateColors();
}

void HeaderBar::setTitle(const QString& title) {
    _title->setText(title);
}

void HeaderBar::addWidget(QWidget* widget) {
    _layout->addWidget(widget);
}

void HeaderBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    const int y = _line == Line::Below ? height() - 1 : 0;
    painter.fillRect(QRect(0, y, width(), 1), PBThemes::colors().separator);
}

void HeaderBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void HeaderBar::updateColors() {
    QPalette palette = _title->palette();
    if (palette.color(QPalette::WindowText) == PBThemes::colors().secondaryText) return;
    palette.setColor(QPalette::WindowText, PBThemes::colors().secondaryText);
    _title->setPalette(palette);
    update();
}
