#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

/// What the program was asked for on its command line.
struct CommandLineOptions {
    QStringList paths; ///< files and folders to open, absolute
    QString profile;   ///< folder for catalogue and settings; empty: the user's own places
    QStringList add;   ///< folders to make folder roots, absolute
    bool untilIdle = false;
    QString screenshot;       ///< PNG to write before quitting
    QSize size;               ///< of the window; invalid when not given
    QString stats;            ///< file for the figures at exit, "-" for standard output
    bool state = false;       ///< print what the running program shows
    QString exportMarks;      ///< file to write all marks to, "-" for standard output
    QString importMarks;      ///< file to read marks from, "-" for standard input
    std::optional<bool> dark; ///< the theme, when it is not the desktop's
    bool isFullScreen = false;
    bool isSlideshow = false; ///< of what is opened, or of what comes back
    bool isService = false;   ///< waits for a call over the message bus, and does what that asks
};

/// The program ends at once: this text on standard output, or on standard error as a failure.
struct CommandLineExit {
    QString text;
    int code = 0;
};

/// What starts the program again for the same catalogue, where it takes up what was shown last;
/// what was to be opened or done is done.
[[nodiscard]] QStringList restartArguments(const CommandLineOptions& options);

/// Reads the command line. Needs no application object.
[[nodiscard]] std::variant<CommandLineOptions, CommandLineExit>
parseCommandLine(const QStringList& arguments);
