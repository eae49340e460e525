#include "shell/commands/StatusNews.h"

#include "platform/tasks/MainThread.h"
#include "shell/large/LargeView.h"
#include "shell/panes/StatusBarView.h"

#include <QToolTip>

void StatusNews::tell(const QString& sentence) const {
    platform::assertMainThread();
    const bool isLarge = _parts.largeView.isShown();
    if (isLarge && _parts.largeView.controller().tell(sentence)) return;
    if (!isLarge && _parts.statusBarView.isVisible()) return _parts.statusBarView.tell(sentence);
    constexpr QPoint inside(12, -48);
    QToolTip::showText(
        _parts.window.mapToGlobal(_parts.window.rect().bottomLeft() + inside), sentence,
        &_parts.window);
}
