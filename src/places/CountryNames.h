#pragma once

#include <QString>
#include <QStringList>

namespace places {

/// The name of a country or territory, given by its two letters of ISO 3166, in the first of the
/// languages (BCP 47, as `QLocale::uiLanguages` gives them) that has one; else in English; else the
/// two letters. Any thread.
[[nodiscard]] QString countryName(const QString& code, const QStringList& languages);

} // namespace places
