#pragma once

#include "app/ApplicationController.h"
#include "browser/PBImageBrowserView.h"
#include "platform/program/StandardFolders.h"
#include "shell/PBMainWindowController.h"
#include "shell/large/LargeView.h"
#include "shell/sidebar/SourceSidebar.h"
#include "support/FolderTest.h"

/// The whole program in this process, with a profile of its own.
struct RunningProgramTest : support::FolderTest {
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
    QString catalogue() const { return path(u"profile/files.db"_s); }
    QString makePicture(const QString& below) const {
        support::writePicture(path(below));
        return path(below);
    }

    PBMainWindowController& window() { return controller->mainWindowController(); }
    SourceTreeController& tree() { return window().sourceSidebar().tree(); }
    PBImageBrowserView& browser() { return *window().window().findChild<PBImageBrowserView*>(); }
    const BrowserSelection& selection() { return browser().selection(); }
    QStringList selectedNames() {
        return support::listed(
            selection().selectedFileArray(FoldedLeaves::Included),
            [](const auto& item) { return item->fileName(); });
    }
    /// The names of the selected photographs, and of the current one.
    QString selectedAndCurrent() {
        const auto current = browser().leaves().imageFileAtIndex(browser().currentIndex());
        return (selectedNames() << (current ? current->fileName() : u"-"_s)).join(u' ');
    }
    QString selectedFolder() {
        const auto selected = tree().selectedFolder();
        return selected ? selected->folderPath() : QString();
    }
    [[nodiscard]] bool selects(const QString& wanted) {
        return support::spinUntil([&] { return selectedFolder() == wanted; });
    }
    void groupBy(const std::vector<int>& chain) {
        controller->browsing().setGroupTypeArray(std::make_shared<const std::vector<int>>(chain));
        controller->scan();
    }
    [[nodiscard]] bool becomesIdle() {
        return support::spinUntil([&] { return controller->isIdle(); });
    }
    /// The browser gets to show so many photographs, and the scan is over.
    [[nodiscard]] bool shows(qint64 count) {
        return support::spinUntil([&] {
            return !window().largeView().isShown() && !controller->isScanning() &&
                   selection().itemCount(FoldedLeaves::Included) == count;
        });
    }
    QStringList roots() {
        return support::listed(
            controller->aliasManager().aliasArray(), [](const auto& root) { return root->path(); });
    }

    std::optional<ApplicationController> controller;
};
