#pragma once

#include "app/ApplicationController.h"
#include "browser/PBImageBrowserView.h"
#include "platform/Places.h"
#include "shell/PBMainWindowController.h"
#include "shell/SourceSidebar.h"
#include "support/Support.h"

#include <QMainWindow>

/// The whole program in this process, with a profile of its own.
struct RunningProgram {
    explicit RunningProgram(const QString& profile) {
        platform::Places::setProfile(profile);
        controller.emplace();
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
    }
    ~RunningProgram() {
        controller.reset();
        platform::Places::setProfile({});
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    [[nodiscard]] PBMainWindowController& window() { return controller->mainWindowController(); }
    [[nodiscard]] PBImageBrowserView& browser() {
        return *window().window().findChild<PBImageBrowserView*>();
    }
    /// The path of the folder that a sidebar has selected; empty for none.
    [[nodiscard]] static QString selectedFolder(SourceSidebar& sidebar) {
        const auto folder = sidebar.tree().selectedFolder();
        return folder ? folder->folderPath() : QString();
    }

    std::optional<ApplicationController> controller;
};
