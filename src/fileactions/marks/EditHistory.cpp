#include "fileactions/marks/EditHistory.h"

#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QLocale>

using platform::briefText;
using platform::localizedFormat;
using platform::localizedString;

namespace fileactions {

void EditHistory::push(Step step) {
    platform::assertMainThread();
    _steps.resize(_done);
    _steps.push_back(std::move(step));
    if (_steps.size() > mostSteps) _steps.pop_front();
    _done = _steps.size();
}

void EditHistory::drop(std::size_t index) {
    platform::assertMainThread();
    _steps.erase(_steps.begin() + static_cast<std::ptrdiff_t>(index));
}

void EditHistory::split(std::size_t index, OtherWay undo, OtherWay redo) {
    platform::assertMainThread();
    Step done = _steps[index];
    done.other = std::move(undo);
    _steps[index].other = std::move(redo);
    _steps.insert(_steps.begin() + static_cast<std::ptrdiff_t>(index), std::move(done));
    _done = index + 1;
}

void EditHistory::undonePartly(OtherWay way, OtherWay rest) {
    split(_done - 1, std::move(rest), std::move(way));
}

void EditHistory::redonePartly(OtherWay way, OtherWay rest) {
    split(_done, std::move(way), std::move(rest));
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
