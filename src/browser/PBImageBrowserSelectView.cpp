#include "browser/PBImageBrowserSelectView.h"

#include <QPainter>

PBImageBrowserSelectView::PBImageBrowserSelectView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void PBImageBrowserSelectView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor::fromRgbF(0.8F, 0.8F, 0.8F, 0.5F));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
