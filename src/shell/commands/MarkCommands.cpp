#include "shell/commands/MarkCommands.h"

#include "catalogue/marks/Stars.h"
#include "fileactions/marks/EditRunner.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/ChosenPhotographs.h"

#include <QShortcut>
#include <QWidget>

using Command = MenuCommand;
using Edit = fileactions::PhotographEdit;

std::span<const MarkCommands::Row> MarkCommands::rows() {
    static const Row all[] = {
        {Command::flagClicked, Edit::ToggleFlag{}},
        {Command::rating0, Edit::Rate{0}},
        {Command::rating1, Edit::Rate{1}},
        {Command::rating2, Edit::Rate{2}},
        {Command::rating3, Edit::Rate{3}},
        {Command::rating4, Edit::Rate{4}},
        {Command::rating5, Edit::Rate{5}},
        {Command::rotateLeft, Edit::Turn{90}},
        {Command::rotateRight, Edit::Turn{-90}},
        {Command::automaticRotate, Edit::RotateAutomatically{}},
        {Command::resetRotate, Edit::ResetRotation{}}};
    return all;
}

MarkCommands::MarkCommands(
    fileactions::EditRunner& edits, const ChosenPhotographs& chosen, QObject* parent)
    : QObject(parent), _edits(edits), _chosen(chosen) {}

void MarkCommands::perform(const Edit::Change& change) {
    platform::assertMainThread();
    Edit edit{.fileIds = {}, .change = change};
    for (const auto& item : _chosen.all())
        edit.fileIds.push_back(item->fileId());
    if (!edit.fileIds.empty()) _edits.run(std::move(edit));
}

void MarkCommands::serveRatingKeys(QWidget& view) {
    for (int stars = 0; stars <= marks::mostStars; ++stars) {
        auto* keys = new QShortcut(QKeySequence(Qt::Key_0 + stars), &view);
        keys->setContext(Qt::WidgetShortcut);
        keys->setAutoRepeat(false);
        connect(keys, &QShortcut::activated, this, [this, stars] { ratingWithStar(stars); });
    }
}
