#pragma once

#include <QToolBar>

class QAction;

/// The bar of commands at the top of the window.
class MainToolbar final : public QToolBar {
    Q_OBJECT

public:
    explicit MainToolbar(QWidget* parent);

    [[nodiscard]] QAction* backAction() const { return _back; }
    [[nodiscard]] QAction* forwardAction() const { return _forward; }
    [[nodiscard]] QAction* addFolderAction() const { return _addFolder; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QAction* addCommand(const QString& icon, QStringView text, const QKeySequence& shortcut);

    QAction* _back;
    QAction* _forward;
    QAction* _addFolder;
};
