#include "fileactions/marks/EditHistory.h"

#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"

#include <QLocale>
#include <QUndoCommand>

using platform::briefText;
using platform::localizedFormat;
using platform::localizedString;

namespace fileactions {

/// One place of the history. It is carried out before the stack is told.
class EditHistory::Command final : public QUndoCommand {
public:
    Command(const QString& text, Step step)
        : QUndoCommand(text), _step(std::make_unique<Step>(std::move(step))) {}
    [[nodiscard]] Step* step() const { return _step.get(); }
    // The stack drops what is obsolete.
    void undo() override { setObsolete(_step->isVoid); }
    void redo() override { setObsolete(_step->isVoid); }

private:
    const std::unique_ptr<Step> _step;
};

EditHistory::Step* EditHistory::step(int index) const {
    const auto* command = dynamic_cast<const Command*>(_stack.command(index));
    return command ? command->step() : nullptr;
}

void EditHistory::push(const QString& text, EditResult::Kind kind, StoredWay back) {
    // The stack owns it.
    _stack.push(
        std::make_unique<Command>(text, Step{.kind = kind, .way = std::move(back)}).release());
}

void EditHistory::push(const QString& text, OtherWay back) {
    Step step{.kind = {}, .way = {}, .other = std::move(back)};
    _stack.push(std::make_unique<Command>(text, std::move(step)).release());
}

void EditHistory::undone(OtherWay way) {
    step(_stack.index() - 1)->other = std::move(way);
    _stack.undo();
}

void EditHistory::redone(OtherWay way) {
    step(_stack.index())->other = std::move(way);
    _stack.redo();
}

void EditHistory::dropUndo() {
    step(_stack.index() - 1)->isVoid = true;
    _stack.undo();
}

void EditHistory::dropRedo() {
    step(_stack.index())->isVoid = true;
    _stack.redo();
}

void EditHistory::undone(StoredWay way) {
    step(_stack.index() - 1)->way = std::move(way);
    _stack.undo();
}

void EditHistory::redone(StoredWay way) {
    step(_stack.index())->way = std::move(way);
    _stack.redo();
}

QString nameOfEdit(const PhotographEdit& edit, qint64 changedCount) {
    if (const auto* rename = std::get_if<PhotographEdit::Rename>(&edit.change))
        return localizedFormat(u"EditName", {briefText(rename->name)});
    if (const auto* rename = std::get_if<PhotographEdit::RenameTag>(&edit.change))
        return localizedFormat(u"EditTagRenamed", {briefText(rename->tag)});
    if (const auto* removed = std::get_if<PhotographEdit::RemoveTag>(&edit.change))
        return localizedFormat(u"EditTagRemoved", {briefText(removed->tag)});
    struct Texts {
        EditResult::Kind kind;
        QStringView one;
        QStringView several;
    };
    constexpr Texts texts[] = {
        {EditResult::Kind::Stars, u"EditStars_1", u"EditStars"},
        {EditResult::Kind::Flag, u"EditFlag_1", u"EditFlag"},
        {EditResult::Kind::Tags, u"EditTags_1", u"EditTags"},
        {EditResult::Kind::Rotation, u"EditRotation_1", u"EditRotation"}};
    for (const Texts& row : texts) {
        if (row.kind != kindOf(edit.change)) continue;
        return changedCount == 1 ? localizedString(row.one)
                                 : localizedFormat(row.several, {QLocale().toString(changedCount)});
    }
    return {};
}

} // namespace fileactions
