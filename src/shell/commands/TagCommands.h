#pragma once

#include "fileactions/marks/PhotographEdit.h"

#include <QPointer>

class QWidget;
class TagsDialog;

namespace fileactions {
class EditRunner;
}

/// What the user does to tags everywhere: opens the list of tags, and asks before a tag goes. Main
/// thread.
class TagCommands {
public:
    /// The parts outlive this object, which outlives the window's dialogs.
    struct Parts {
        fileactions::EditRunner& edits;
        QWidget& window;
    };
    explicit TagCommands(const Parts& parts) : _parts(parts) {}

    void show();

private:
    /// Has the photographs of each tag counted; the dialog shows them when they are.
    void fill();
    void rename(const QString& tag, const QString& name);
    void remove(const QString& tag, qint64 photographs);
    void run(fileactions::PhotographEdit::Change change);

    const Parts _parts;
    QPointer<TagsDialog> _dialog;
};
