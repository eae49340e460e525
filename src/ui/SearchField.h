#pragma once

#include <QLineEdit>

class QAction;

/// A field for a text to search for, with a symbol in front and a button that empties it. Main
/// thread.
class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(const QString& placeholder, QWidget* parent = nullptr);

    /// Takes the keyboard and selects the text.
    void focusSearch();
    /// Another text, without telling.
    void showText(const QString& text);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user changed the text.
    void searchChanged(const QString& text);
    /// The user is done with the field: the keyboard should go to what was found.
    void finished();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void updateClearAction();
    void updateColors();

    QAction* _clear;
};
