#pragma once

#include "shell/menus/MenuCommand.h"

#include <QObject>

#include <functional>
#include <map>

class MainToolbar;
class QAction;

/// Has the tips of disabled buttons of the toolbar say why they are disabled, by what the menus
/// know when the tip is shown. Main thread.
class ToolbarReasons final : public QObject {
    Q_OBJECT

public:
    /// Answers with the sentence that says why the command is not possible now.
    using Reason = std::function<QString(MenuCommand command)>;

    /// The toolbar outlives this object.
    ToolbarReasons(MainToolbar& toolbar, Reason reason, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QString tipOf(const QAction& action) const;

    const Reason _reason;
    std::map<const QAction*, MenuCommand> _commands;
};
