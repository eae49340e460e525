#include "shell/toolbar/ImageToolbarController.h"

#include "shell/menus/MainMenu.h"
#include "shell/toolbar/MainToolbar.h"

ImageToolbarController::ImageToolbarController(
    MainToolbar& toolbar, MainMenu& menu, QObject* parent)
    : QObject(parent), _toolbar(toolbar), _menu(menu) {
    for (const MainToolbar::ImageItem& item : _toolbar.imageViewToolbarItems()) {
        connect(item.action, &QAction::triggered, this, [this, command = item.command] {
            _menu.trigger(command);
            validateVisibleItems();
        });
    }
}

void ImageToolbarController::validateVisibleItems() {
    if (_toolbar.content() != MainToolbar::Content::LargeView) return;
    for (const MainToolbar::ImageItem& item : _toolbar.imageViewToolbarItems())
        item.action->setEnabled(_menu.isPossible(item.command));
}
