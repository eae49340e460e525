#pragma once

#include <QObject>
#include <QPointer>

class MainMenu;
class PBImageView;
class PreferencesDialog;
class QWidget;
struct ShellServices;

/// Shows the preferences, and has the large view follow them. Main thread.
class PreferencesCommand final : public QObject {
    Q_OBJECT

public:
    /// All outlive this object, or go with its parent.
    struct Parts {
        const ShellServices& services;
        QWidget& window;
        MainMenu& menu;
        PBImageView& imageView;
    };
    PreferencesCommand(const Parts& parts, QObject* parent);

private:
    void show();
    void updateWheel() const;
    void updateGround() const;

    const Parts _parts;
    QPointer<PreferencesDialog> _dialog;
};
