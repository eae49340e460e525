#pragma once

#include <QByteArray>

#include <vector>

class QMimeData;

namespace platform {

/// Files on their way between programs, by the pasteboard or a drag.
struct PasteboardFiles {
    /// Absolute, as the disk spells them: also names that are in no encoding that we know.
    std::vector<QByteArray> paths;
    /// They were cut: pasting moves them.
    bool isCut = false;
};

/// What the forms of the desktop's file managers say: `text/uri-list` with
/// `application/x-kde-cutselection`, and `x-special/gnome-copied-files`. Places that are not files
/// of this machine are left out.
[[nodiscard]] PasteboardFiles filesOfMimeData(const QMimeData& data);
/// In all of these forms, and as plain text for editors and terminals.
void setFilesOfMimeData(QMimeData& data, const PasteboardFiles& files);

} // namespace platform
