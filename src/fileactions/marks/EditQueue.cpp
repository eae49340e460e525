#include "fileactions/marks/EditQueue.h"

#include "FMDB/FMDatabase.h"
#include "fileactions/marks/ShownPhotographs.h"
#include "group/FolderPaths.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/ExitDeadline.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

using platform::MainLoop;

namespace fileactions {

namespace {

using Kind = EditResult::Kind;

unsigned fieldsOf(Kind kind) {
    switch (kind) {
    case Kind::Stars:
        return ShownStars;
    case Kind::Flag:
        return ShownFlag;
    case Kind::Tags:
        return ShownTags;
    case Kind::Rotation:
        return ShownRotation;
    case Kind::Name:
        return ShownName;
    case Kind::TagEverywhere:
        break; // the whole is shown anew
    }
    return 0;
}

/// What SQLite said, in words for the user.
QString inWords(const QString& reason) {
    struct Text {
        QStringView said;
        QStringView key;
    };
    constexpr Text texts[] = {
        {u"is locked", u"EditLocked"}, {u"full", u"EditDiskFull"}, {u"readonly", u"EditReadOnly"}};
    for (const Text& text : texts)
        if (reason.contains(text.said)) return platform::localizedString(text.key);
    return platform::localizedFormat(u"EditRefused", {reason});
}

} // namespace

EditQueue::EditQueue(Environment environment) : _environment(std::move(environment)) {}

EditQueue::~EditQueue() {
    finish();
}

void EditQueue::run(PhotographEdit edit, Done done) {
    add({.kind = Job::Edit, .edit = std::move(edit), .done = std::move(done)});
}

void EditQueue::readAgain(std::vector<qint64> fileIds) {
    add({.kind = Job::Read, .fileIds = std::move(fileIds)});
}

void EditQueue::store(Store store, qint64 photographs, Stored done) {
    add(
        {.kind = Job::Import,
         .store = std::move(store),
         .storeCount = photographs,
         .stored = std::move(done)});
}

void EditQueue::finish() {
    platform::assertMainThread();
    const platform::ExitDeadline::Hold hold;
    _isFinishing = true;
    drain();
    if (_isOtherRunning) {
        // Its end is not waited for; the edits behind it are.
        _isRunning = _isOtherRunning = false;
        _jobs.pop_front();
        std::erase_if(
            _jobs, [](const Job& job) { return job.kind == Job::Undo || job.kind == Job::Redo; });
        beginNext();
        drain();
    }
    *_alive = false;
    _both.reset();
}

qint64 EditQueue::photographsOf(const Job& job, const Work& work) {
    if (const auto* edit = std::get_if<PhotographEdit>(&work)) return std::ssize(edit->fileIds);
    qint64 count = job.storeCount;
    if (const auto* marks = std::get_if<MarksEdit>(&work))
        for (const MarksEdit::OfPhotographs& part : marks->photographs)
            count += std::ssize(part.fileIds);
    return count;
}

qint64 EditQueue::pendingCount() const {
    qint64 count = 0;
    for (auto job = _jobs.begin() + (_isOtherRunning ? 1 : 0); job != _jobs.end(); ++job) {
        if (job->isLook()) continue;
        // What an undo is of is known when its turn comes.
        const bool isFirst = _isRunning && job == _jobs.begin();
        count += std::max<qint64>(isFirst ? _runningCount : std::ssize(job->edit.fileIds), 1);
    }
    return count;
}

void EditQueue::add(Job job) {
    platform::assertMainThread();
    _jobs.push_back(std::move(job));
    beginNext();
}

std::optional<EditQueue::Work> EditQueue::workOf(const Job& job) const {
    const auto wayOf = [](const EditHistory::Step* step) {
        return step
                   ? std::visit([](const auto& way) { return std::optional<Work>(way); }, step->way)
                   : std::nullopt;
    };
    switch (job.kind) {
    case Job::Edit:
        return job.edit;
    case Job::Undo:
        return wayOf(_history.undoStep());
    case Job::Redo:
        return wayOf(_history.redoStep());
    case Job::Read:
        return job.fileIds;
    case Job::Import:
        return job.store;
    case Job::Look:
        return job.look;
    case Job::Other:
        break; // never comes so far
    }
    return std::nullopt;
}

void EditQueue::beginNext() {
    while (!_isRunning && !_jobs.empty()) {
        if (beginOther()) continue;
        auto work = workOf(_jobs.front());
        if (!work) {
            _jobs.pop_front();
            continue;
        }
        _isRunning = true;
        _runningCount = photographsOf(_jobs.front(), *work);
        if (!_jobs.front().isLook()) Q_EMIT didBegin();
        _queue.addOperation([this, alive = std::weak_ptr(_alive), work = std::move(*work)] {
            Outcome outcome = perform(work);
            {
                const platform::Lock lock(_mutex);
                _finished = std::move(outcome);
            }
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Common, [this, alive] {
                if (!alive.expired()) takeFinished();
            });
        });
    }
    if (isIdle() && !_isFinishing) Q_EMIT didEnd();
}

void EditQueue::look(Look look, std::function<void()> done) {
    add({.kind = Job::Look, .look = std::move(look), .looked = std::move(done)});
}

void EditQueue::countTags(Counted done) {
    const auto counts = std::make_shared<std::optional<std::vector<marks::TagRows::Count>>>();
    look(
        [counts](FMDatabase* both) {
            if (both) *counts = marks::TagRows::counts(*both);
        },
        [counts, done = std::move(done)] { done(std::move(*counts)); });
}

void EditQueue::didOther(const QString& text, OtherWay back) {
    add({.kind = Job::Other, .text = text, .way = std::move(back)});
}

bool EditQueue::beginOther() {
    Job& job = _jobs.front();
    if (job.kind == Job::Other) {
        _history.push({.text = job.text, .other = std::move(job.way)});
        _jobs.pop_front();
        return true;
    }
    const bool isUndo = job.kind == Job::Undo;
    if (!isUndo && job.kind != Job::Redo) return false;
    const EditHistory::Step* step = isUndo ? _history.undoStep() : _history.redoStep();
    if (!step || !step->other) return false;
    _isRunning = _isOtherRunning = true;
    const OtherWay way = *step->other;
    way.perform([this, isUndo,
                 alive = std::weak_ptr(_alive)](OtherWay::End end, OtherWay back, OtherWay rest) {
        // Nor after `finish`, which did not wait for it.
        const auto isAlive = alive.lock();
        if (!isAlive || !*isAlive) return;
        _isRunning = _isOtherRunning = false;
        _jobs.pop_front();
        endOther(isUndo, end, std::move(back), std::move(rest));
        beginNext();
    });
    return true;
}

void EditQueue::endOther(bool isUndo, OtherWay::End end, OtherWay back, OtherWay rest) {
    switch (end) {
    case OtherWay::End::Done:
        return isUndo ? _history.undone(std::move(back)) : _history.redone(std::move(back));
    case OtherWay::End::Partly:
        if (isUndo) {
            _history.undonePartly(std::move(back), std::move(rest));
        } else {
            _history.redonePartly(std::move(back), std::move(rest));
        }
        break;
    case OtherWay::End::Void:
        return isUndo ? _history.dropUndo() : _history.dropRedo();
    case OtherWay::End::StillToDo:
        break;
    }
    // Those that were to follow would do the same once more.
    while (!_jobs.empty() && (_jobs.front().kind == Job::Undo || _jobs.front().kind == Job::Redo))
        _jobs.pop_front();
}

void EditQueue::takeFinished() {
    std::optional<Outcome> outcome;
    {
        const platform::Lock lock(_mutex);
        outcome = std::exchange(_finished, std::nullopt);
    }
    if (!outcome) return; // somebody waited for it
    const Job job = std::move(_jobs.front());
    _jobs.pop_front();
    _isRunning = false;
    const std::weak_ptr alive(_alive);
    complete(job, std::move(*outcome));
    if (!alive.expired()) beginNext();
}

void EditQueue::drain() {
    while (_isRunning && !_isOtherRunning) {
        _queue.waitUntilAllOperationsAreFinished();
        takeFinished();
    }
}

void EditQueue::complete(const Job& job, Outcome outcome) {
    if (job.kind == Job::Look) {
        if (!_isFinishing) job.looked();
        return;
    }
    if (const auto* reason = std::get_if<QString>(&outcome)) return fail(job, *reason);
    auto& stored = std::get<StoredEdit>(outcome);
    if (stored.hasChanged) _environment.ledgerDidChange();
    if (job.kind == Job::Read || job.kind == Job::Import) {
        if (!_isFinishing) showAgain(stored);
        if (job.stored) job.stored({});
        return;
    }
    EditResult result = resultOf(job, stored);
    if (!_isFinishing && stored.hasChanged) {
        result.hasLeft = _environment.show(stored.shown, fieldsOf(result.kind));
        if (result.kind == Kind::TagEverywhere) _environment.tagsDidChange();
    }
    remember(job, stored);
    Q_EMIT didEdit(result);
    if (job.done) job.done(result);
}

void EditQueue::showAgain(const StoredEdit& stored) {
    _environment.show(stored.shown, ShownAll);
    std::vector<qint64> fileIds;
    for (const marks::ShownRow& row : stored.shown)
        fileIds.push_back(row.fileId);
    Q_EMIT didReadAgain(fileIds);
}

EditResult EditQueue::resultOf(const Job& job, const StoredEdit& stored) const {
    EditResult result;
    result.kind = job.kind == Job::Edit   ? kindOf(job.edit.change)
                  : job.kind == Job::Undo ? _history.undoStep()->kind
                                          : _history.redoStep()->kind;
    result.way = job.kind == Job::Undo   ? EditResult::Way::Undone
                 : job.kind == Job::Redo ? EditResult::Way::Redone
                                         : EditResult::Way::Done;
    result.isStored = true;
    for (const marks::ShownRow& row : stored.shown)
        result.changed.push_back(row.fileId);
    result.missingCount = stored.missingCount;
    result.isFlagged = !stored.shown.empty() && stored.shown.front().flag;
    result.turnedBy = stored.turnedBy;
    return result;
}

void EditQueue::remember(const Job& job, StoredEdit& stored) {
    if (job.kind == Job::Undo) {
        _history.undone(std::move(stored.inverse));
    } else if (job.kind == Job::Redo) {
        _history.redone(std::move(stored.inverse));
    } else if (stored.hasChanged) {
        _history.push(
            {.text = nameOfEdit(job.edit, std::ssize(stored.shown)),
             .kind = kindOf(job.edit.change),
             .way = std::move(stored.inverse)});
    }
}

void EditQueue::fail(const Job& job, const QString& reason) {
    if (job.kind == Job::Read) {
        if (!_isFinishing) Q_EMIT didNotReadAgain(reason);
        return;
    }
    if (job.kind == Job::Import) return job.stored(reason);
    if (job.kind == Job::Edit) dropUndoOfFailed();
    EditResult result = resultOf(job, {});
    result.isStored = false;
    result.reason = result.kind == Kind::Name ? reason : inWords(reason);
    Q_EMIT didFail(result);
    if (job.done) job.done(result);
}

void EditQueue::dropUndoOfFailed() {
    int above = 0; // what would be in the history by then
    for (auto job = _jobs.begin(); job != _jobs.end(); ++job) {
        if (job->kind == Job::Edit || job->kind == Job::Redo || job->kind == Job::Other) ++above;
        if (job->kind != Job::Undo || above-- > 0) continue;
        _jobs.erase(job);
        return;
    }
}

EditQueue::Outcome EditQueue::perform(const Work& work) {
    if (!_both) {
        _both = _environment.connect();
        if (!_both) {
            if (const auto* look = std::get_if<Look>(&work)) (*look)(nullptr);
            return QStringLiteral("the ledger of marks can't be opened");
        }
        _both->setLongestWait(_environment.longestWait);
        // A transaction that overflows the cache would keep others from reading until its end.
        _both->executeUpdate(QStringLiteral("pragma cache_spill = off"));
    }
    return performOn(*_both, work);
}

EditQueue::Outcome EditQueue::performOn(FMDatabase& both, const Work& work) const {
    if (const auto* edit = std::get_if<PhotographEdit>(&work)) return performEdit(both, *edit);
    StoredEdit stored;
    if (const auto* look = std::get_if<Look>(&work)) {
        (*look)(&both);
        return stored;
    }
    if (const auto* fileIds = std::get_if<std::vector<qint64>>(&work)) {
        auto rows = marks::shownRows(both, *fileIds);
        if (!rows) return both.lastErrorMessage();
        stored.shown = std::move(*rows);
        return stored;
    }
    const auto* store = std::get_if<Store>(&work);
    auto outcome = store ? (*store)(both)
                         : storeEdit(both, _environment.mountedRoots(), std::get<MarksEdit>(work));
    if (auto* reason = std::get_if<QString>(&outcome)) return std::move(*reason);
    auto& performed = std::get<PerformedEdit>(outcome);
    stored.shown = std::move(performed.shown);
    stored.missingCount = performed.missingCount;
    stored.hasChanged = !performed.inverse.isEmpty();
    stored.inverse = std::move(performed.inverse);
    return stored;
}

EditQueue::Outcome EditQueue::performEdit(FMDatabase& both, const PhotographEdit& edit) const {
    const group::CatalogueFolderPaths folders(both, _environment.folderRoots);
    std::variant<StoredEdit, QString> outcome;
    const auto store = [&] {
        outcome = storePhotographEdit(both, _environment.mountedRoots(), folders, edit);
    };
    if (std::holds_alternative<PhotographEdit::Rename>(edit.change)) {
        _environment.whileRowsChange(store);
    } else {
        store();
    }
    return outcome;
}

} // namespace fileactions
