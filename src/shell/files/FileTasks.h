#pragma once

#include "fileactions/FileEdit.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/files/FileQuestions.h"
#include "shell/services/FileServices.h"

#include <QImage>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

class PBAliasManager;
class PBFileProgressWindowController;
class QWidget;

/// Runs the commands on files, one after the other, on a thread of their own, with the sheet of
/// their progress while they take time. Main thread.
class FileTasks final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        const FileServices& services;
        const PBAliasManager& aliasManager;
        FileQuestions& questions;
        QWidget& window;
        /// Of the photograph on show with this id; null where there is none.
        std::function<QImage(qint64 fileId)> thumbnail;
        /// What is done sooner needs no sheet.
        std::chrono::milliseconds sheetDelay{250};
    };
    /// What a command says while it works, and what it does.
    struct Command {
        QString counterKey; ///< of the text with number and total
        FileQuestions::Deed deed = FileQuestions::Deed::Copy;
        std::function<fileactions::FileOutcome(const fileactions::FileEditor& editor)> work;
        /// When it is done, or was cancelled and has ended; failures were told.
        std::function<void(const fileactions::FileOutcome& outcome)> finished;
    };

    /// Removes what a former run left half-written, first of all.
    explicit FileTasks(const Environment& environment);
    /// Stops what runs, and waits for it.
    ~FileTasks() override;

    void start(Command command);
    /// What runs ends as soon as the disks let it; the sheet closes at once.
    void cancel();
    [[nodiscard]] bool isIdle() const { return _queue.operationCount() == 0; }

private:
    class Task;

    void begin(const std::shared_ptr<Task>& task);
    void end(const std::shared_ptr<Task>& task, const fileactions::FileOutcome& outcome);
    void showProgress();
    /// Takes the sheet down for a question; it is back when the function that this answers is
    /// called.
    [[nodiscard]] std::function<void()> makeRoom();

    const Environment _environment;
    std::unique_ptr<PBFileProgressWindowController> _sheet; ///< from its first use on
    std::shared_ptr<Task> _current;                         ///< nullptr between commands
    QTimer _delay;                                          ///< until the sheet is shown
    QTimer _refresh;
    qint64 _shownFileId = 0;
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _queue{QStringLiteral("files")}; // ends before all else
};
