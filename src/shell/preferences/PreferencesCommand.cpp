#include "shell/preferences/PreferencesCommand.h"

#include "shell/menus/MainMenu.h"
#include "shell/preferences/PreferencesDialog.h"
#include "shell/services/Preferences.h"
#include "shell/services/ShellServices.h"
#include "viewer/PBImageView.h"

PreferencesCommand::PreferencesCommand(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts) {
    const Preferences& preferences = parts.services.preferences;
    connect(&preferences, &Preferences::wheelDidChange, this, [this] { updateWheel(); });
    connect(&preferences, &Preferences::groundDidChange, this, [this] { updateGround(); });
    updateWheel();
    updateGround();
    parts.menu.connectCommand(MenuCommand::showPreferences, [this] { show(); });
}

void PreferencesCommand::show() {
    if (!_dialog) {
        _dialog = new PreferencesDialog(
            _parts.services.preferences, _parts.services.thumbnailCache, _parts.window);
        _dialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    _dialog->show();
    _dialog->raise();
    _dialog->activateWindow();
}

void PreferencesCommand::updateWheel() const {
    _parts.imageView.setWheelZooms(_parts.services.preferences.wheel() == Preferences::Wheel::Zoom);
}

void PreferencesCommand::updateGround() const {
    switch (_parts.services.preferences.ground()) {
    case Preferences::Ground::Grey:
        return _parts.imageView.setGround(ImagePainter::groundColor());
    case Preferences::Ground::Black:
        return _parts.imageView.setGround(QColor(Qt::black));
    case Preferences::Ground::White:
        return _parts.imageView.setGround(QColor(Qt::white));
    case Preferences::Ground::Window:
        return _parts.imageView.setGround({});
    }
}
