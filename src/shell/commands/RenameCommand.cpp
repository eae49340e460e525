#include "shell/commands/RenameCommand.h"

#include "browser/PBImageBrowserView.h"
#include "fileactions/NameToGive.h"
#include "fileactions/marks/EditRunner.h"
#include "group/PBImageFileItem.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "shell/panes/BrowserPane.h"
#include "ui/WindowAlert.h"

using fileactions::NameToGive;
using platform::localizedFormat;
using platform::localizedString;

namespace {

QString endingOf(const QString& name) {
    return name.sliced(name.lastIndexOf(u'.'));
}

WindowQuestion questionAbout(const NameToGive& given) {
    const QString keep = localizedFormat(u"RenameKeepEnding", {endingOf(given.nameOfSameType)});
    if (given.doubt == NameToGive::Doubt::NoType)
        return {
            .message = localizedFormat(u"RenameNoType", {given.name}),
            .details = localizedString(u"RenameNoTypeDetails"),
            .consent = localizedString(u"RenameWithoutEnding"),
            .other = keep};
    return {
        .message = localizedFormat(u"RenameOtherType", {given.name, endingOf(given.name)}),
        .details = localizedString(u"RenameOtherTypeDetails"),
        .consent = localizedFormat(u"RenameUseEnding", {endingOf(given.name)}),
        .other = keep};
}

WindowQuestion questionAboutHiding(const QString& name) {
    return {
        .message = localizedFormat(u"RenameHidden", {name}),
        .details = localizedString(u"RenameHiddenDetails"),
        .consent = localizedString(u"RenameHide"),
        .other = {}};
}

} // namespace

void RenameCommand::begin() {
    platform::assertMainThread();
    PBImageBrowserView& view = _parts.browserPane.browserView();
    if (view.selection().selectCount(FoldedLeaves::Excluded) != 1) return;
    const PBImageBrowserIndex index = view.selection().firstSelectItem(FoldedLeaves::Excluded);
    view.scrollIndexToVisible(index);
    view.renameIndex(index);
}

void RenameCommand::finish(const std::shared_ptr<PBImageFileItem>& item, const QString& typed) {
    platform::assertMainThread();
    const NameToGive given = fileactions::nameToGive(typed, item->fileName());
    if (given.doubt == NameToGive::Doubt::None)
        return giveUnlessHidden(item, typed, given.name, given.isHidden);
    ask(item, typed, given);
}

void RenameCommand::ask(
    const std::shared_ptr<PBImageFileItem>& item, const QString& typed, const NameToGive& given) {
    askInWindow(
        _parts.window, questionAbout(given), [this, item, typed, given](WindowAnswer answer) {
            switch (answer) {
            case WindowAnswer::Cancel:
                return typeAgain(item, typed);
            case WindowAnswer::Consent:
                return giveUnlessHidden(item, typed, given.name, given.isHidden);
            case WindowAnswer::Other:
                return giveUnlessHidden(item, typed, given.nameOfSameType, given.isHidden);
            }
        });
}

void RenameCommand::giveUnlessHidden(
    const std::shared_ptr<PBImageFileItem>& item, const QString& typed, const QString& name,
    bool isHidden) {
    if (!isHidden) return give(item, typed, name);
    askInWindow(
        _parts.window, questionAboutHiding(name), [this, item, typed, name](WindowAnswer answer) {
            if (answer == WindowAnswer::Consent) return give(item, typed, name);
            typeAgain(item, typed);
        });
}

void RenameCommand::give(
    const std::shared_ptr<PBImageFileItem>& item, const QString& typed, const QString& name) {
    _parts.edits.run(
        {.fileIds = {item->fileId()}, .change = fileactions::PhotographEdit::Rename{name}},
        [this, alive = std::weak_ptr(_alive), item, typed](const fileactions::EditResult& result) {
            if (alive.expired() || result.isStored) return;
            showWindowAlert(
                _parts.window, localizedFormat(u"CantRename", {item->fileName()}), result.reason,
                [this, item, typed] { typeAgain(item, typed); });
        });
}

void RenameCommand::typeAgain(const std::shared_ptr<PBImageFileItem>& item, const QString& typed) {
    if (_parts.typeAgain) return _parts.typeAgain(item, typed);
    PBImageBrowserView& view = _parts.browserPane.browserView();
    view.renameIndex(view.leaves().indexForImageFile(item), typed);
}
