#pragma once

#include "fileactions/marks/PhotographEdit.h"
#include "shell/menus/MenuCommand.h"

#include <QObject>

#include <span>

class ChosenPhotographs;
class QWidget;

namespace fileactions {
class EditRunner;
}

/// The commands that mark photographs and turn them: edits of what is chosen in the view in force.
/// Menus, keys, toolbar and gestures come here. Main thread.
class MarkCommands final : public QObject {
    Q_OBJECT

public:
    /// What a command of the menus does to what is chosen.
    struct Row {
        MenuCommand command;
        fileactions::PhotographEdit::Change change;
    };
    [[nodiscard]] static std::span<const Row> rows();

    /// Both outlive this object.
    MarkCommands(
        fileactions::EditRunner& edits, const ChosenPhotographs& chosen, QObject* parent = nullptr);

    /// Nothing happens where nothing is chosen.
    void perform(const fileactions::PhotographEdit::Change& change);
    /// 0 to 5.
    void ratingWithStar(int stars) { perform(fileactions::PhotographEdit::Rate{.stars = stars}); }
    void flagClicked() { perform(fileactions::PhotographEdit::ToggleFlag{}); }
    void rotateLeft() { perform(fileactions::PhotographEdit::Turn{.degrees = 90}); }
    void rotateRight() { perform(fileactions::PhotographEdit::Turn{.degrees = -90}); }

    /// The keys 0 to 5 rate, while the widget has the keyboard.
    void serveRatingKeys(QWidget& view);

private:
    fileactions::EditRunner& _edits;
    const ChosenPhotographs& _chosen;
};
