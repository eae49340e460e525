#pragma once

#include <QObject>

class MainMenu;
class MainToolbar;

/// Connects the toolbar's items of the large view with the commands of the menus: they do the same,
/// and are possible when those are. Main thread.
class ImageToolbarController final : public QObject {
    Q_OBJECT

public:
    /// Both outlive this object.
    ImageToolbarController(MainToolbar& toolbar, MainMenu& menu, QObject* parent);

    /// Enables each item by what is possible now.
    void validateVisibleItems();

private:
    MainToolbar& _toolbar;
    MainMenu& _menu;
};
