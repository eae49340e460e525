#pragma once

#include "group/PBGroupItem.h"
#include "info/tags/TagsChange.h"

#include <QString>

#include <memory>

/// The photographs that the panel is about.
struct InfoSelection {
    /// Whose values are merged and shown, in the order of the view: without those of folded groups.
    PBImageFileList shown;
    /// What an edit changes: all that is selected.
    PBImageFileList edited;
};

/// Whether these are the same photographs, in whatever order. After a scan they may be other items.
[[nodiscard]] bool hasSamePhotographs(const PBImageFileList& one, const PBImageFileList& other);

/// What the panel asks for when the user edits something in it. It stores nothing itself; whoever
/// performs an edit calls `InfoPanel::updateInfo` afterwards, whether it succeeded or not. Main
/// thread.
class InfoEdits {
public:
    virtual ~InfoEdits() = default;

    /// Flags all of them, unless each is flagged by then: its flag goes.
    virtual void toggleFlag(const PBImageFileList& items) = 0;
    /// 0 to 5 stars.
    virtual void setStar(const PBImageFileList& items, int star) = 0;
    /// Never called with an empty change.
    virtual void changeTags(const PBImageFileList& items, const TagsChange& change) = 0;
    /// Takes the name as it was typed: the rules for names, and what is asked about them, are those
    /// of every other rename. A name that can't be given is brought back to the panel by
    /// `InfoPanel::renameAgain`.
    virtual void rename(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) = 0;
};
