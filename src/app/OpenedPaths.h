#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// A path that was handed over and can't be opened.
struct UnopenedPath {
    enum class Fault : int {
        Missing,
        NotLookedAt,
        NeitherFileNorFolder,
        UnreadableFile,
        UnreadableFolder,
        NoPhotograph,
        NotOfThisComputer,
    };
    Fault fault = Fault::Missing;
    QString path;
    int error = 0; ///< of the system (errno); 0 for none

    friend bool operator==(const UnopenedPath&, const UnopenedPath&) = default;
};

/// A sentence for standard error, without a full stop.
[[nodiscard]] QString sentenceOf(const UnopenedPath& unopened);
/// The same for the window, with its full stop.
[[nodiscard]] QString localizedSentenceOf(const UnopenedPath& unopened);

/// Those of the paths from outside that can be opened: folders that can be read, and files that are
/// photographs, as their disk spells them. Each other one is told. Any thread; waits for the disks.
[[nodiscard]] QStringList openablePaths(
    const QStringList& paths, const std::function<void(const UnopenedPath& unopened)>& tell);
