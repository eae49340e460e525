#pragma once

#include <QString>

namespace platform {

/// A name from elsewhere as it may be shown by itself: characters that turn the direction of what
/// follows ("gpj.exe" read as "exe.jpg") are shown as unknown ones instead of being obeyed. Names
/// in scripts that run from right to left stay as they are. Any thread.
[[nodiscard]] QString harmlessText(const QString& text);

/// The same within other text: one that runs from right to left is isolated, so that it does not
/// reorder what stands around it.
[[nodiscard]] QString isolatedText(const QString& text);

/// A text of any length in one line, and shortened in its middle to about so many characters: for
/// menus, lists and sentences.
[[nodiscard]] QString briefText(const QString& text, qsizetype most = 60);

} // namespace platform
