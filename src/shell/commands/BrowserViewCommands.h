#pragma once

#include "browser/layout/BrowserMetrics.h"
#include "shell/menus/MenuCommand.h"
#include "shell/panes/WindowSettings.h"

#include <QObject>

#include <span>

class PBImageBrowserView;

/// How the browser shows its photographs: what stands with the thumbnails, and their size. Each
/// change is stored. Main thread.
class BrowserViewCommands final : public QObject {
    Q_OBJECT

public:
    /// One entry of the menu and the bit that it flips.
    struct StyleRow {
        MenuCommand command;
        int argument; ///< of `doThumbnailAndInfoMenu`
        BrowserMetrics::StyleBit bit;
    };

    /// View and settings outlive this object.
    BrowserViewCommands(
        PBImageBrowserView& view, platform::UserDefaults& defaults, QObject* parent);

    [[nodiscard]] static std::span<const StyleRow> styleRows();

    /// Flips the bit of the row with that argument; an argument without a row does nothing.
    void doThumbnailAndInfoMenu(int argument);

    /// Takes the position of the slider, 0 to 100.
    void thumbnailSizeSlide(double slider);
    /// One step of the menu, within the limits.
    void zoomIn();
    void zoomOut();

Q_SIGNALS:
    /// By a command or a gesture; in force already.
    void thumbnailSizeDidChange(double size);

private:
    void setThumbnailSize(double size);

    PBImageBrowserView& _view;
    WindowSettings _settings;
};
