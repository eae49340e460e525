#include "shell/panes/EmptyReason.h"

#include "group/ItemOrder.h"
#include "platform/program/LocalizedTexts.h"

using platform::localizedFormat;
using platform::localizedString;

PBImageBrowserTipView::Reason emptyReason(const Narrowing& narrowing) {
    using Remedy = PBImageBrowserTipView::Remedy;
    const QString filtered = photographsOfFilter(narrowing.filter);
    PBImageBrowserTipView::Reason reason;
    if (narrowing.isAway) {
        reason.text = localizedString(u"FolderAway");
        return reason;
    }
    if (!narrowing.searchString.isEmpty()) {
        reason.text =
            filtered.isEmpty()
                ? localizedFormat(u"NoneMatches", {narrowing.searchString})
                : localizedFormat(u"NoneOfThemMatches", {filtered, narrowing.searchString});
        reason.remedies.push_back(Remedy::ClearSearch);
    } else if (!filtered.isEmpty()) {
        reason.text = localizedFormat(u"NoneOfThemHere", {filtered});
    }
    if (!filtered.isEmpty()) reason.remedies.push_back(Remedy::ShowAll);
    if (narrowing.leavesOutSubfolders) {
        if (reason.text.isEmpty()) reason.text = localizedString(u"NoneWithoutSubfolders");
        reason.remedies.push_back(Remedy::IncludeSubfolders);
    }
    return reason;
}

QString photographsOfFilter(std::uint64_t filter) {
    const bool isFlagged = (filter & group::FilterFlagged) != 0;
    const bool isRated = (filter & group::FilterRated) != 0;
    if (isFlagged && isRated) return localizedString(u"PhotographsFlaggedAndRated");
    if (isFlagged) return localizedString(u"PhotographsFlagged");
    return isRated ? localizedString(u"PhotographsRated") : QString();
}
