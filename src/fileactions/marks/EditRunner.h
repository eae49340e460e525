#pragma once

#include "catalogue/marks/TagRows.h"
#include "fileactions/marks/PhotographEdit.h"

#include <QObject>

#include <functional>
#include <optional>
#include <vector>

namespace fileactions {

/// Something that is done elsewhere, as with files, and has its place in the history of edits: what
/// takes it back, or does it once more. `done` is called later, once. Main thread.
struct OtherWay {
    enum class End {
        Done,      ///< `back` leads back from there
        Partly,    ///< the same, and `rest` does what is still to do
        StillToDo, ///< it failed or was cancelled, and can be tried again
        Void,      ///< there is nothing to do any more
    };
    using Ended = std::function<void(End end, OtherWay back, OtherWay rest)>;
    std::function<void(Ended done)> perform;
};

/// Performs the edits of the user, one after the other in the order in which they came, and keeps
/// what takes them back. Nothing waits: an edit is stored on a thread of its own, then the items
/// that are shown change, and then it is told. Main thread.
class EditRunner : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(const EditResult& result)>;

    /// `done` is called when the edit is in the catalogue and in the items, or could not be stored;
    /// after the signals. Never within this call, and not at all if the program ends before.
    virtual void run(PhotographEdit edit, Done done = {}) = 0;

    // These take their turn behind the edits that are on their way.

    /// Something else was done, which this takes back; `text` as in `undoText`.
    virtual void didOther(const QString& text, OtherWay back) = 0;
    /// Counts how many photographs have each tag. `done` is called later, with nothing if it can't
    /// be read, and not at all if the program ends before.
    using Counted = std::function<void(std::optional<std::vector<marks::TagRows::Count>> counts)>;
    virtual void countTags(Counted done) = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    [[nodiscard]] virtual bool canUndo() const = 0;
    [[nodiscard]] virtual bool canRedo() const = 0;
    /// "Rating of 12 Photographs"; empty without one.
    [[nodiscard]] virtual QString undoText() const = 0;
    [[nodiscard]] virtual QString redoText() const = 0;

    /// The photographs of the edits that are on their way; 0 when there are none. What is being
    /// done elsewhere does not count.
    [[nodiscard]] virtual qint64 pendingCount() const = 0;

Q_SIGNALS:
    /// An edit is on its way, and will be stored or fail.
    void didBegin();
    /// An edit, an undo or a redo was stored; the items have it. Where it moves photographs to
    /// other groups, the trees follow.
    void didEdit(const fileactions::EditResult& result);
    /// Photographs got other marks from elsewhere: from an import, or since they were found again.
    void didReadAgain(const std::vector<qint64>& fileIds);
    /// Photographs have other marks, which could not be read: they are shown with their former
    /// ones.
    void didNotReadAgain(const QString& reason);
    /// One that could not be stored.
    void didFail(const fileactions::EditResult& result);
    /// None is on its way any more, whatever has become of them.
    void didEnd();
};

} // namespace fileactions
