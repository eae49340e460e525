#pragma once

#include <QString>
#include <QStringView>

#include <optional>

/// Metadata fields whose values are codes, each with a localised text. Any thread.
namespace group {

/// The field's values are numeric codes.
[[nodiscard]] bool isCodedField(QStringView key);
/// The text of a code; nothing for a code that the field's list lacks, but the empty text for one
/// that is left out on purpose.
[[nodiscard]] std::optional<QString> textOfCode(QStringView key, qint64 code);
/// The text of a reference letter, in either case, such as "K" of `SpeedRef`; nothing for any other
/// letter or field.
[[nodiscard]] std::optional<QString> textOfLetter(QStringView key, QStringView letter);

} // namespace group
