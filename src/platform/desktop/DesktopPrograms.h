#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <vector>

/// The programs that the desktop has for files and addresses, by its desktop files and its lists of
/// MIME types, and how they are started: as GIO knows them, which keeps in memory what it has read
/// and looks again where a folder changed. Any thread; all of it may block on the disk or the bus.
namespace platform::DesktopPrograms {

struct Program {
    QString id;   ///< name of the desktop file
    QString name; ///< in the user's language
    QString icon; ///< of the theme, or a path; may be empty
    bool operator==(const Program&) const = default;
};

/// Those that take every one of the types, or what these are kinds of; the one that the user
/// prefers for the first type in front. Those that are hidden, for other desktops, or want a
/// terminal, and this program itself, are not among them.
[[nodiscard]] std::vector<Program> programsFor(const QStringList& mimeTypes);

/// Starts the program with the files, which are there; false when it can't be started.
[[nodiscard]] bool open(const Program& program, const QStringList& paths);

/// Whether some program takes addresses of the scheme, such as "geo".
[[nodiscard]] bool hasProgramForScheme(QStringView scheme);

} // namespace platform::DesktopPrograms
