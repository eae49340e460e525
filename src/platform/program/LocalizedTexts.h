#pragma once

#include "platform/values/PBValue.h"

#include <QString>
#include <QStringView>

#include <initializer_list>

namespace platform {

/// The text shown to the user for a key, from the tables under `resources/texts/`. A key without an
/// entry stands for itself. Any thread.
[[nodiscard]] QString localizedString(QStringView key);

/// The text of the key with its placeholders filled in: `%@` takes the text form of an argument,
/// `%d` an integer with the user's digit grouping, `%.1f` (any number of places) a number with the
/// user's decimal point, `%%` is a percent sign. `%2$@` takes the second argument. A placeholder
/// without an argument stays as it stands.
[[nodiscard]] QString localizedFormat(QStringView key, std::initializer_list<PBValue> arguments);

/// As `localizedFormat`, on a format that was looked up already.
[[nodiscard]] QString formatText(QStringView format, std::initializer_list<PBValue> arguments);

} // namespace platform
