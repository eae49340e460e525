#pragma once

#include "fileactions/FileEdit.h"
#include "group/PBGroupItem.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/files/FileTasks.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class ChosenPhotographs;
class PBGroupTreeDataSource;
class PBImageImporterManager;
class QMimeData;

namespace group {
class FolderPaths;
}

/// Copy, move, duplicate, paste and trash of the files of photographs, as the window's menus, keys
/// and drops ask for them. Main thread.
class FileCommands final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        PBImageImporterManager& imageImporterManager;
        const PBGroupTreeDataSource& groupTreeDataSource;
        const FileServices& services;
        const group::FolderPaths& folderPaths;
        FileTasks& tasks;
        FileQuestions& questions;
        group::TagLookup tagWithTagId;
        /// What the commands act on.
        const ChosenPhotographs& chosen;
        /// The absolute path of the folder that is selected in the sidebar; empty: none.
        std::function<QString()> selectedFolder;
    };
    /// All that is named outlives this object.
    explicit FileCommands(Environment environment) : _environment(std::move(environment)) {}
    /// Stops what is made for the pasteboard, and waits for that.
    ~FileCommands() override;

    /// Asks for a folder first.
    void doCopyMoveTo(bool move);
    /// The whole tree on show as folders, one for each group.
    void doGroupCopyMoveTo(bool move);
    void doDuplicate();
    /// Puts the files on the pasteboard; `cut`: so that pasting moves them.
    void copy(bool cut);
    /// Copies, or moves what was cut, into the selected folder; pictures that are no files become
    /// some.
    void doPaste();
    /// To the trash.
    void deleteClicked();
    /// Asks first.
    void deleteForGood();
    /// Files that were dropped on a folder.
    void transferInto(const QString& folder, const std::vector<QByteArray>& paths, bool move);

    /// Of the pasteboard or a drag: those that are photographs by their names.
    [[nodiscard]] std::vector<QByteArray> photographsOf(const QMimeData& data) const;

    /// What a command that works with its own tasks has done; `one` and `many` are keys of its
    /// name.
    void took(const fileactions::FileOutcome& outcome, QStringView one, QStringView many) {
        finished(outcome, {one, many});
    }
    /// Takes something back or does it once more.
    void perform(
        const fileactions::FileEdit& edit,
        std::function<void(const fileactions::FileOutcome& outcome)> done);

Q_SIGNALS:
    /// A command has changed files, and this takes it back; `text` names it, as "Move of 2
    /// Photographs".
    void didChangeFiles(const fileactions::FileEdit& inverse, const QString& text);

private:
    struct Name {
        QStringView one; ///< keys of the texts
        QStringView many;
    };
    void runTransfer(const fileactions::TransferPlan& plan, const Name& name, bool isOfCut = false);
    static void forgetCut(const fileactions::FileOutcome& outcome);
    void runRemoval(const fileactions::TransferPlan& chosen, bool forGood);
    [[nodiscard]] fileactions::TransferPlan
    planOf(fileactions::TransferPlan::Kind kind, const QString& folder) const;
    [[nodiscard]] fileactions::TransferPlan groupPlan(bool move, const QString& folder) const;
    [[nodiscard]] std::vector<QByteArray> chosenPaths() const;
    void finished(const fileactions::FileOutcome& outcome, const Name& name);
    void showChanges(const fileactions::FileOutcome& outcome);

    const Environment _environment;
    platform::OperationQueue _pictures{QStringLiteral("pasteboard")}; // ends before all else
};
