#pragma once

#include "platform/desktop/SchemeHandlers.h"

#include <QString>
#include <QStringList>

#include <vector>

/// The programs that the desktop has for files, by its desktop files and its lists of MIME types
/// (freedesktop.org: Desktop Entry 1.5, Association between MIME types and applications 1.0.1). All
/// of it reads small files of the user's configuration. Any thread.
namespace platform::DesktopPrograms {

struct Program {
    QString id;     ///< name of the desktop file
    QString name;   ///< in the user's language
    QString icon;   ///< of the theme, or a path; may be empty
    QString exec;   ///< as the desktop file has it
    QString path;   ///< of the desktop file
    QString folder; ///< to start in; may be empty
};

/// Those that take every one of the types, the one that the user prefers for the first type in
/// front. Hidden ones, those of other desktops, those whose program is not there, those that want a
/// terminal and this program itself are not among them.
[[nodiscard]] std::vector<Program>
programsFor(const QStringList& mimeTypes, const SchemeHandlers::Places& places);
[[nodiscard]] std::vector<Program> programsFor(const QStringList& mimeTypes);

/// The command lines that open the files: one, or one for each file where the program takes but one
/// at a time. The first text of each is the program. Empty where the desktop file can't be
/// understood.
[[nodiscard]] std::vector<QStringList>
commandLines(const Program& program, const QStringList& paths);

/// Starts the program with the files; false when it can't be started.
bool open(const Program& program, const QStringList& paths);

} // namespace platform::DesktopPrograms
