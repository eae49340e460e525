#pragma once

#include "fileactions/marks/EditRunner.h"
#include "fileactions/marks/PhotographEditStoring.h"

#include <QUndoStack>

#include <optional>

namespace fileactions {

/// The edits that can be taken back, and those that can be repeated. What it hands out is stored by
/// somebody else first: only then the history moves. Main thread.
class EditHistory {
public:
    /// The last ones are kept.
    static constexpr int steps = 200;

    EditHistory() { _stack.setUndoLimit(steps); }

    /// An edit was stored; what could be repeated is forgotten.
    void push(const QString& text, EditResult::Kind kind, StoredWay back);

    /// The same of what was done elsewhere.
    void push(const QString& text, OtherWay back);

    struct Step {
        EditResult::Kind kind{};
        StoredWay way;
        /// Is what counts of a step that is done elsewhere.
        std::optional<OtherWay> other = std::nullopt;
        bool isVoid = false;
    };
    /// nullptr: there is none. Valid until the history changes.
    [[nodiscard]] const Step* undoStep() const { return step(_stack.index() - 1); }
    [[nodiscard]] const Step* redoStep() const { return step(_stack.index()); }
    /// The step was stored; `way` leads where it came from.
    void undone(StoredWay way);
    void redone(StoredWay way);
    void undone(OtherWay way);
    void redone(OtherWay way);
    /// The step leads nowhere any more, and goes.
    void dropUndo();
    void dropRedo();

    [[nodiscard]] QString undoText() const { return _stack.undoText(); }
    [[nodiscard]] QString redoText() const { return _stack.redoText(); }

private:
    class Command;
    [[nodiscard]] Step* step(int index) const;

    QUndoStack _stack;
};

/// "Rating of 12 Photographs".
[[nodiscard]] QString nameOfEdit(const PhotographEdit& edit, qint64 changedCount);

} // namespace fileactions
