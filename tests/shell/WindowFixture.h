#pragma once

#include "browser/PBImageBrowserView.h"
#include "shell/PBMainWindowController.h"
#include "shell/ShellFixture.h"
#include "shell/sidebar/SourceSidebar.h"

#include <QMainWindow>
#include <QMenuBar>

/// The real window, with a folder in the sidebar whose photographs a test publishes.
struct WindowFixture : ShellFixture {
    ~WindowFixture() override { controller.reset(); }

    /// With the root selected.
    void showWindow() {
        controller.emplace(shell());
        window().resize(1300, 800);
        controller->showWindow();
        tree().select(*tree().dataSource().folderAliasItemWithAliasObject(*root));
    }
    QMainWindow& window() { return controller->window(); }
    template <typename Widget>
    Widget& part(const QString& name = {}) {
        return *window().findChild<Widget*>(name);
    }
    SourceTreeController& tree() { return controller->sourceSidebar().tree(); }
    PBImageBrowserView& browser() { return part<PBImageBrowserView>(); }
    QAction* action(QStringView name) {
        const QList<QAction*> actions = window().actions();
        return *std::ranges::find(actions, name, &QAction::objectName);
    }
    void openMenus() { Q_EMIT part<QMenuBar>().actions().front()->menu()->aboutToShow(); }
    bool isEnabled(QStringView name) {
        openMenus();
        return action(name)->isEnabled();
    }
    void choose(QStringView name) {
        EXPECT_TRUE(isEnabled(name)) << name.toString().toStdString();
        action(name)->trigger();
    }

    std::shared_ptr<PBAliasObject> root = addRoot(make(u"photos"));
    qint64 folderId = PBCatalogue(db).insertFolderWithAliasId(root->aliasId(), {});
    PBImageFileList items;
    std::optional<PBMainWindowController> controller;
};
