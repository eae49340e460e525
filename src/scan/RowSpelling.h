#pragma once

#include "platform/files/Presence.h"
#include "platform/files/Spelling.h"

class PBAliasManager;
struct ScanServices;

/// Tells rows of the catalogue whose folder or file the disk has under another spelling, since
/// somebody changed its case: they are gone, and the walk over the disk makes new ones. Otherwise a
/// disk that takes no note of case would show each such photograph twice. Lives for one pass; on
/// the scan thread.
class RowSpelling {
public:
    explicit RowSpelling(const ScanServices& services);

    /// Of a folder, below its root, that was looked at.
    [[nodiscard]] platform::Presence
    presenceOfFolder(const QString& path, platform::Presence looked);
    /// Of a file in a folder that is there.
    [[nodiscard]] platform::Presence
    presenceOfFile(const QString& folderPath, const QString& name, platform::Presence looked);

private:
    const PBAliasManager& _roots;
    platform::SpellingCheck _spelling;
};
