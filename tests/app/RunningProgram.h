#pragma once

#include "app/ApplicationController.h"
#include "browser/PBImageBrowserView.h"
#include "platform/program/StandardFolders.h"
#include "shell/PBMainWindowController.h"
#include "shell/sidebar/SourceSidebar.h"
#include "support/Support.h"

/// The whole program in this process, with a profile of its own.
struct RunningProgramTest : testing::Test {
    RunningProgramTest() { start(); }
    ~RunningProgramTest() override {
        controller.reset();
        platform::StandardFolders::setProfile({});
    }
    /// Anew, if it runs already; with a photograph it is for that one.
    void start(const QString& file = {}) {
        controller.reset();
        platform::StandardFolders::setProfile(path(u"profile"_s));
        controller.emplace();
        controller->awakeFromNib();
        if (!file.isEmpty()) controller->setIgnoreSelectLastFolder();
        controller->applicationDidFinishLaunching();
        if (!file.isEmpty()) controller->applicationOpenFiles({file});
    }
    QString path(const QString& below) const { return folder.filePath(below); }
    QString make(const QString& below) const {
        QDir().mkpath(path(below));
        return path(below);
    }
    QString makePicture(const QString& below) const {
        support::writePicture(path(below));
        return path(below);
    }

    PBMainWindowController& window() { return controller->mainWindowController(); }
    SourceTreeController& tree() { return window().sourceSidebar().tree(); }
    PBImageBrowserView& browser() { return *window().window().findChild<PBImageBrowserView*>(); }
    const BrowserSelection& selection() { return browser().selection(); }
    QString selectedFolder() {
        const auto selected = tree().selectedFolder();
        return selected ? selected->folderPath() : QString();
    }
    [[nodiscard]] bool selects(const QString& wanted) {
        return support::spinUntil([&] { return selectedFolder() == wanted; });
    }
    QStringList roots() {
        return support::listed(
            controller->aliasManager().aliasArray(), [](const auto& root) { return root->path(); });
    }

    QTemporaryDir folder;
    std::optional<ApplicationController> controller;
};
