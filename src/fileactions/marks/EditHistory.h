#pragma once

#include "fileactions/marks/EditRunner.h"
#include "fileactions/marks/PhotographEditStoring.h"

#include <QString>

#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

namespace fileactions {

/// The edits that can be taken back, and those that can be repeated. What it hands out is stored by
/// somebody else first: only then the history moves. Main thread.
class EditHistory {
public:
    /// The last ones are kept.
    static constexpr std::size_t mostSteps = 200;

    struct Step {
        QString text;
        EditResult::Kind kind{};
        StoredWay way = {};
        /// Is what counts of a step that is done elsewhere.
        std::optional<OtherWay> other = std::nullopt;
    };
    /// An edit was stored, and this takes it back; what could be repeated is forgotten.
    void push(Step step);

    /// nullptr: there is none. Valid until the history changes.
    [[nodiscard]] const Step* undoStep() const { return _done > 0 ? &_steps[_done - 1] : nullptr; }
    [[nodiscard]] const Step* redoStep() const {
        return _done < _steps.size() ? &_steps[_done] : nullptr;
    }
    /// The step was stored; `way` leads where it came from.
    void undone(StoredWay way) { _steps[--_done].way = std::move(way); }
    void redone(StoredWay way) { _steps[_done++].way = std::move(way); }
    void undone(OtherWay way) { _steps[--_done].other = std::move(way); }
    void redone(OtherWay way) { _steps[_done++].other = std::move(way); }
    /// Only a part of it was done: that has a step of its own from now on, and the rest stays where
    /// the step was.
    void undonePartly(OtherWay way, OtherWay rest);
    void redonePartly(OtherWay way, OtherWay rest);
    /// The step leads nowhere any more, and goes.
    void dropUndo() { drop(--_done); }
    void dropRedo() { drop(_done); }

    [[nodiscard]] QString undoText() const { return textOf(undoStep()); }
    [[nodiscard]] QString redoText() const { return textOf(redoStep()); }

private:
    [[nodiscard]] static QString textOf(const Step* step) { return step ? step->text : QString(); }
    void drop(std::size_t index);
    void split(std::size_t index, OtherWay undo, OtherWay redo);

    std::deque<Step> _steps;
    std::size_t _done = 0; ///< those before are undone next, from there on they are repeated
};

/// "Rating of 12 Photographs".
[[nodiscard]] QString nameOfEdit(const PhotographEdit& edit, qint64 changedCount);

} // namespace fileactions
