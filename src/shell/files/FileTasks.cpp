#include "shell/files/FileTasks.h"

#include "FMDB/FMDatabase.h"
#include "fileactions/copy/CatalogueRows.h"
#include "library/PBAliasManager.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/Mutex.h"
#include "shell/files/PBFileProgressWindowController.h"

#include <QPixmap>

#include <chrono>
#include <optional>
#include <utility>

using fileactions::FileFailure;
using fileactions::FileOutcome;
using fileactions::FileProgress;
using platform::MainLoop;

namespace {

constexpr std::chrono::milliseconds refreshInterval{40};

} // namespace

/// One command on its way. Asks the main thread, and waits for the answer unless it is stopped.
class FileTasks::Task final : public platform::Operation,
                              public std::enable_shared_from_this<FileTasks::Task>,
                              private fileactions::FilePrompts {
public:
    Task(FileTasks& tasks, Command command)
        : _tasks(tasks), _alive(tasks._alive), _services(tasks._environment.services),
          _aliasManager(tasks._environment.aliasManager), _command(std::move(command)) {}

    [[nodiscard]] const Command& command() const { return _command; }
    [[nodiscard]] FileProgress latest() {
        const platform::Lock lock(_mutex);
        return _latest;
    }

protected:
    void main() override {
        onMain([](FileTasks& tasks, const std::shared_ptr<Task>& task) { tasks.begin(task); });
        platform::DiskFileSystem files;
        fileactions::TemporaryFiles temporaries(files, _services.journalPath);
        platform::Trash trash(files);
        fileactions::CatalogueRows rows(
            {.connect = _services.connect,
             .mountedRoots = _services.mountedRoots,
             .placeOfFolder = [this](const QString& folder) { return placeOf(folder); },
             .rowsWillChange = _services.rowsWillChange});
        const fileactions::FileEditor editor(
            {.files = files,
             .temporaries = temporaries,
             .trash = trash,
             .rows = rows,
             .prompts = *this,
             .copyWord = platform::localizedString(u"copy")},
            stopToken());
        FileOutcome outcome = _command.work(editor);
        outcome.changedRows = rows.changedRows();
        onMain([outcome = std::move(outcome)](FileTasks& tasks, const std::shared_ptr<Task>& task) {
            tasks.end(task, outcome);
        });
    }

private:
    [[nodiscard]] std::optional<fileactions::CatalogueRows::Place>
    placeOf(const QString& folder) const {
        fileactions::CatalogueRows::Place place;
        const auto root =
            _aliasManager.appropriateAliasObjectForPath(folder, &place.relativePath, false);
        if (!root) return std::nullopt;
        place.aliasId = root->aliasId();
        return place;
    }

    template <typename Function>
    void onMain(Function function) {
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(
            MainLoop::Mode::Common, [tasks = &_tasks, alive = _alive, task = shared_from_this(),
                                     function = std::move(function)] {
                if (!alive.expired()) function(*tasks, task);
            });
    }

    /// `ask` is called on the main thread with what takes the answer; a stop answers `refusal`.
    template <typename Answer, typename Ask>
    [[nodiscard]] Answer answerTo(Ask ask, Answer refusal) {
        struct Waiting {
            platform::Mutex mutex;
            platform::Condition answered;
            std::optional<Answer> answer;
        };
        const auto waiting = std::make_shared<Waiting>();
        onMain([ask, waiting](FileTasks& tasks, const std::shared_ptr<Task>& task) {
            if (task->isCancelled()) return;
            ask(tasks, [waiting, bringBack = tasks.makeRoom()](const Answer& answer) {
                bringBack();
                const platform::Lock lock(waiting->mutex);
                waiting->answer = answer;
                waiting->answered.notifyAll();
            });
        });
        platform::Lock lock(waiting->mutex);
        waiting->answered.waitUnlessStopped(
            lock, stopToken(), [&waiting] { return waiting->answer.has_value(); });
        return waiting->answer.value_or(refusal);
    }

    ConflictAnswer askConflict(const FileFailure& conflict) override {
        return answerTo<ConflictAnswer>(
            [conflict](FileTasks& tasks, auto answered) {
                tasks._environment.questions.askConflict(conflict, std::move(answered));
            },
            ConflictAnswer{});
    }
    bool askSkip(const FileFailure& failure) override {
        return answerTo<bool>(
            [failure](FileTasks& tasks, auto answered) {
                tasks._environment.questions.askSkip(failure, std::move(answered));
            },
            false);
    }
    void tellFailure(const FileFailure& failure) override {
        static_cast<void>(answerTo<bool>(
            [failure, deed = _command.deed](FileTasks& tasks, auto answered) {
                tasks._environment.questions.tellFailure(
                    deed, failure, 1, [answered = std::move(answered)] { answered(true); });
            },
            false));
    }
    bool askDeleteForGood(std::int64_t count) override {
        return answerTo<bool>(
            [count](FileTasks& tasks, auto answered) {
                tasks._environment.questions.askDeleteForGood(count, {}, true, std::move(answered));
            },
            false);
    }
    void progress(const FileProgress& progress) override {
        const platform::Lock lock(_mutex);
        _latest = progress;
    }

    FileTasks& _tasks; ///< for the main thread, while `_alive`
    const std::weak_ptr<bool> _alive;
    const FileServices& _services;
    const PBAliasManager& _aliasManager;
    const Command _command;
    platform::Mutex _mutex;
    FileProgress _latest VELMORA_GUARDED_BY(_mutex);
};

FileTasks::FileTasks(const Environment& environment) : _environment(environment) {
    _delay.setSingleShot(true);
    _delay.setInterval(environment.sheetDelay);
    connect(&_delay, &QTimer::timeout, this, [this] {
        if (!_current) return;
        if (!_sheet) {
            _sheet = std::make_unique<PBFileProgressWindowController>(_environment.window);
            connect(
                _sheet.get(), &PBFileProgressWindowController::cancelled, this, &FileTasks::cancel);
        }
        showProgress();
        _sheet->begin();
    });
    _refresh.setInterval(refreshInterval);
    connect(&_refresh, &QTimer::timeout, this, &FileTasks::showProgress);
    _queue.addOperation([journal = environment.services.journalPath] {
        platform::DiskFileSystem files;
        fileactions::TemporaryFiles::removeLeft(files, journal);
    });
}

FileTasks::~FileTasks() {
    _alive.reset();
    _queue.cancelAllOperations();
    _queue.waitUntilAllOperationsAreFinished();
}

void FileTasks::start(Command command) {
    platform::assertMainThread();
    _queue.addOperation(std::make_shared<Task>(*this, std::move(command)));
}

void FileTasks::begin(const std::shared_ptr<Task>& task) {
    _current = task;
    _shownFileId = -1;
    _delay.start();
    _refresh.start();
}

void FileTasks::cancel() {
    platform::assertMainThread();
    if (!_current) return;
    _current->cancel();
    _current.reset();
    _delay.stop();
    _refresh.stop();
    if (_sheet && _sheet->isShown()) _sheet->end(PBFileProgressWindowController::Cancelled);
}

void FileTasks::end(const std::shared_ptr<Task>& task, const FileOutcome& outcome) {
    if (_current == task) {
        _current.reset();
        _delay.stop();
        _refresh.stop();
        if (_sheet && _sheet->isShown()) _sheet->end(PBFileProgressWindowController::Ended);
    }
    const FileTasks::Command& command = task->command();
    if (outcome.failedCount > 0) {
        _environment.questions.tellFailure(
            command.deed, outcome.failure, outcome.failedCount, [] {});
    }
    command.finished(outcome);
}

std::function<void()> FileTasks::makeRoom() {
    _delay.stop();
    if (_sheet && _sheet->isShown()) _sheet->takeDown();
    return [this, alive = std::weak_ptr(_alive)] {
        if (!alive.expired() && _current) _delay.start();
    };
}

void FileTasks::showProgress() {
    if (!_current || !_sheet) return;
    const FileProgress progress = _current->latest();
    _sheet->show(
        platform::localizedFormat(
            _current->command().counterKey, {progress.number, progress.total}),
        progress);
    if (progress.fileId == _shownFileId) return;
    _shownFileId = progress.fileId;
    _sheet->setImage(
        progress.fileId > 0 ? QPixmap::fromImage(_environment.thumbnail(progress.fileId))
                            : QPixmap());
}
