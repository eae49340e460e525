#pragma once

#include <QLineEdit>

#include <functional>

/// A text field over what is edited, gone after one answer: Return or a click or scroll elsewhere
/// takes the text, Escape leaves all as it was. Main thread.
class PBModalTextField final : public QLineEdit {
    Q_OBJECT

public:
    PBModalTextField(int modalTag, const QString& text, QWidget* parent);
    ~PBModalTextField() override;

    /// Selects the name without its extension.
    void selectBaseName();
    /// As Escape does.
    void cancel() { endModal(true); }
    /// As Return does.
    void commit() { endModal(false); }

Q_SIGNALS:
    /// The text was taken. Not sent after Escape.
    void textFieldDidFinished(int modalTag, const QString& text);
    /// Either way; the field deletes itself after this. Whoever made the field has to find another
    /// place for the keyboard, if that was here still.
    void ended(bool hadKeyboard);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void endModal(bool isCancelled);

    const int _modalTag;
    bool _hasEnded = false;
};
