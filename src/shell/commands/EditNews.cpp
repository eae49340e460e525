#include "shell/commands/EditNews.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "fileactions/marks/EditRunner.h"
#include "platform/program/LocalizedTexts.h"
#include "shell/commands/StatusNews.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/NoticeBar.h"

using fileactions::EditResult;
using fileactions::EditRunner;
using platform::localizedFormat;
using platform::localizedString;

namespace {

const QString noticeKey = QStringLiteral("edit");
const QString unreadKey = QStringLiteral("unread marks");

} // namespace

EditNews::EditNews(const Parts& parts, QObject* parent) : QObject(parent), _parts(parts) {
    connect(&parts.edits, &EditRunner::didEdit, this, &EditNews::tell);
    connect(&parts.edits, &EditRunner::didFail, this, &EditNews::tellFailure);
    connect(&parts.edits, &EditRunner::didNotReadAgain, this, &EditNews::tellUnread);
    connect(&parts.edits, &EditRunner::didReadAgain, this, [this] {
        _parts.browserPane.browserView().reloadData();
    });
}

void EditNews::tell(const EditResult& result) {
    _parts.noticeBar.withdraw(noticeKey);
    PBImageBrowserView& view = _parts.browserPane.browserView();
    if (!result.changed.empty()) {
        view.reloadData();
        // The trees follow later.
        view.captureScrollOfSelection();
    }
    if (result.hasLeft) view.selectDidChange();
    if (result.missingCount > 0)
        _parts.statusNews.tell(
            result.missingCount == 1
                ? localizedString(u"EditMissing_1")
                : localizedFormat(u"EditMissing", {QLocale().toString(result.missingCount)}));
}

void EditNews::tellFailure(const EditResult& result) {
    // Whoever gave the name asks for another one.
    if (result.kind == EditResult::Kind::Name && result.way == EditResult::Way::Done) return;
    _parts.noticeBar.withdraw(noticeKey); // may have been closed: this is another one
    const bool isUndo = result.way == EditResult::Way::Undone;
    const bool isRedo = result.way == EditResult::Way::Redone;
    _parts.noticeBar.tell(
        {.key = noticeKey,
         .text = localizedString(
             isUndo   ? u"UndoFailed"
             : isRedo ? u"RedoFailed"
                      : u"EditFailed"),
         .details = result.reason,
         .action = {},
         .perform = {}});
}

void EditNews::tellUnread(const QString& reason) {
    _parts.noticeBar.withdraw(unreadKey); // may have been closed: these are others
    _parts.noticeBar.tell(
        {.key = unreadKey,
         .text = localizedString(u"MarksUnread"),
         .details = localizedFormat(u"MarksUnreadDetails", {reason}),
         .action = localizedString(u"MarksReadAgain"),
         .perform = [this] {
             _parts.noticeBar.withdraw(unreadKey);
             _parts.delegate.scan();
         }});
}
