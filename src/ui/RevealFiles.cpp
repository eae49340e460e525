#include "ui/RevealFiles.h"

#include "platform/desktop/Workspace.h"
#include "platform/program/LocalizedTexts.h"
#include "ui/WindowAlert.h"

#include <QPointer>
#include <QWidget>

void revealFiles(QWidget& widget, const QStringList& paths) {
    platform::Workspace::revealInFileManager(paths, [window = QPointer(widget.window())] {
        if (window) showWindowAlert(*window, platform::localizedString(u"CantReveal"));
    });
}
