#include "ui/MenuTracking.h"

#include "platform/tasks/MainLoop.h"

#include <QMenu>

#include <memory>
#include <optional>

void keepContentsWhileShown(QMenu& menu) {
    // Goes with the menu's connections where it is deleted while it is open.
    const auto scope = std::make_shared<std::optional<platform::TrackingScope>>();
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [scope] { scope->emplace(); });
    QObject::connect(&menu, &QMenu::aboutToHide, &menu, [scope] { scope->reset(); });
}
