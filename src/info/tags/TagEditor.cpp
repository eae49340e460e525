#include "info/tags/TagEditor.h"

#include "info/tags/PBTagTokenField.h"

#include <QFocusEvent>
#include <QKeyEvent>

TagEditor::TagEditor(PBTagTokenField& field) : QLineEdit(&field), _field(field) {
    setFrame(false);
    setTextMargins(0, 0, 0, 0);
    QPalette clear = palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    setPalette(clear);
    connect(this, &QLineEdit::textEdited, &_field, &PBTagTokenField::textEdited);
}

bool TagEditor::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        // Keys of tokens are the field's, whatever the menu does with them.
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
            event->accept();
            return true;
        }
    }
    return QLineEdit::event(event);
}

void TagEditor::keyPressEvent(QKeyEvent* event) {
    if (_field.keyPress(*event)) return event->accept();
    QLineEdit::keyPressEvent(event);
}

void TagEditor::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    _field.focusDidChange(true, event->reason());
}

void TagEditor::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    _field.focusDidChange(false, event->reason());
}
