#include "shell/sidebar/FirstRun.h"

#include "browser/PBImageBrowserTipView.h"
#include "shell/sidebar/SourceSidebar.h"

#include <QDir>
#include <QStandardPaths>

QString FirstRun::picturesFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    // A desktop without one names the home folder, which is more than anybody means.
    const bool isHome = QDir::cleanPath(folder) == QDir::homePath();
    return isHome ? QString() : QDir::cleanPath(folder);
}

void FirstRun::offerPictures(PBImageBrowserTipView& tip, SourceSidebar& sidebar) {
    const QString folder = picturesFolder();
    if (folder.isEmpty() || !sidebar.isFolder(folder)) return;
    tip.setSuggestedFolder(folder);
    QObject::connect(
        &tip, &PBImageBrowserTipView::suggestedFolderRequested, &sidebar.commands(),
        [&sidebar](const QString& path) { (void)sidebar.commands().addOrSelectFolder(path); });
}
