#pragma once

#include <QString>

#include <chrono>
#include <functional>

/// A catalogue that another program has locked when the program starts: nothing can be shown before
/// it is free, so a window says what is waited for.
namespace CatalogueWait {

/// Whether another connection keeps the file from being read and written, after so long a wait. A
/// file that isn't there, or can't be opened at all, is not held.
[[nodiscard]] bool isHeld(const QString& file, std::chrono::milliseconds patience);

/// Shows that the file is waited for and asks `isFree` a few times a second, until that is so or
/// the user has enough of it; false for the latter. Main thread.
[[nodiscard]] bool waitInWindow(const QString& file, const std::function<bool()>& isFree);

/// Returns when the file is free; false to end the program.
[[nodiscard]] bool settle(const QString& file);

} // namespace CatalogueWait
