#pragma once

#include <QLineEdit>

class PBTagTokenField;

/// The line of a field of tokens: hands on what is not about its text.
class TagEditor final : public QLineEdit {
    Q_OBJECT

public:
    explicit TagEditor(PBTagTokenField& field);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    PBTagTokenField& _field;
};
