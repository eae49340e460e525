#include "ui/PBModalTextField.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

PBModalTextField::PBModalTextField(int modalTag, const QString& text, QWidget* parent)
    : QLineEdit(text, parent), _modalTag(modalTag) {
    setAlignment(Qt::AlignCenter);
    QFont small = font();
    small.setPixelSize(11);
    setFont(small);
    setFrame(true);
    setTextMargins(0, 0, 0, 0);
    qApp->installEventFilter(this);
}

PBModalTextField::~PBModalTextField() {
    qApp->removeEventFilter(this);
}

void PBModalTextField::selectBaseName() {
    const auto dot = static_cast<int>(text().lastIndexOf(u'.'));
    setSelection(0, dot > 0 ? dot : static_cast<int>(text().size()));
}

bool PBModalTextField::eventFilter(QObject* watched, QEvent* event) {
    if (_hasEnded) return false;
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget || widget->window() != window()) return false;
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // Keys are the field's while it is there, whatever the menu does with them.
        if (watched == this) event->accept();
        return false;
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape) endModal(true);
        if (key == Qt::Key_Return || key == Qt::Key_Enter) endModal(false);
        return _hasEnded;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel: {
        const auto* pointer = static_cast<QSinglePointEvent*>(event);
        if (!rect().contains(mapFromGlobal(pointer->globalPosition().toPoint()))) endModal(false);
        return false; // The event goes on to what was clicked.
    }
    default:
        return false;
    }
}

void PBModalTextField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    // Its own menu takes the focus for a while, and so does another window.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        endModal(false);
}

void PBModalTextField::endModal(bool isCancelled) {
    if (std::exchange(_hasEnded, true)) return;
    const QString answer = text();
    const bool hadKeyboard = hasFocus();
    hide();
    deleteLater();
    Q_EMIT ended(hadKeyboard);
    if (!isCancelled) Q_EMIT textFieldDidFinished(_modalTag, answer);
}
