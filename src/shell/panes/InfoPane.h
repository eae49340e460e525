#pragma once

#include <QWidget>

class HeaderBar;
class QStackedWidget;
class QToolButton;

namespace platform {
class UserDefaults;
}

/// The information panel: two panels, of which the buttons in its bar choose one. Main thread.
class InfoPane final : public QWidget {
    Q_OBJECT

public:
    /// The settings outlive this widget.
    explicit InfoPane(platform::UserDefaults& defaults, QWidget* parent = nullptr);

    /// 0: the general panel, 1: the one with more information.
    [[nodiscard]] int selectedInfo() const;
    void selectInfo(int tag);

private:
    QToolButton* addButton(const QString& text, int tag);

    platform::UserDefaults& _defaults;
    HeaderBar* _bar;
    QToolButton* _generalInfoButton;
    QToolButton* _moreInfoButton;
    QStackedWidget* _panels;
};
