#pragma once

#include <QString>

#include <functional>

/// A catalogue whose file is no database any more, found before anything of it is shown: the user
/// says what becomes of it. Nothing is ever deleted, since ratings and flags may still be saved
/// from the file.
namespace DamagedCatalogue {

enum class Choice {
    StartAnew, // keep the file under another name, begin an empty catalogue
    GoWithout, // leave it as it is; this run keeps nothing
    Quit,
};

/// Why the file can't be used; empty if it can, or isn't there.
[[nodiscard]] QString reason(const QString& file);

/// Asks in a dialog of its own.
[[nodiscard]] Choice ask(const QString& file, const QString& reason);

/// Looks at the file and, where it is damaged, does what the user chose. False to end the program.
[[nodiscard]] bool settle(
    const QString& file,
    const std::function<Choice(const QString& file, const QString& reason)>& ask);

} // namespace DamagedCatalogue
