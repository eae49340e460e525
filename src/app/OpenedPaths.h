#pragma once

#include <QStringList>

#include <functional>

/// Those of the paths from the command line that can be opened: folders that can be read, and files
/// that are photographs, as their disk spells them. Each other one is told in a sentence.
[[nodiscard]] QStringList openablePaths(
    const QStringList& paths, const std::function<void(const QString& sentence)>& complain);
