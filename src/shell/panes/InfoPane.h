#pragma once

#include "info/InfoPanel.h"

#include <QWidget>

class HeaderBar;
class QToolButton;

/// The pane with the information panel: its title, and the buttons that choose one of its two
/// pages, in the bar over it. May be placed elsewhere at any time. Main thread.
class InfoPane final : public QWidget {
    Q_OBJECT

public:
    /// All of the parts outlive this widget.
    explicit InfoPane(const InfoPanel::Parts& parts, QWidget* parent = nullptr);

    [[nodiscard]] InfoPanel& panel() const { return *_panel; }
    /// 0: the general panel, 1: the one with more information.
    [[nodiscard]] int selectedInfo() const { return _panel->selectedInfo(); }
    void selectInfo(int tag);

private:
    /// Shows the page, and does so at the next start.
    void chooseInfo(int tag);
    QToolButton* addButton(const QString& text, int tag);

    platform::UserDefaults& _defaults;
    InfoPanel* _panel;
    HeaderBar* _bar;
    QToolButton* _generalInfoButton;
    QToolButton* _moreInfoButton;
};
