#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace platform {

/// The texts by their keys, and the languages that there are: one folder for each below
/// `resources/texts/`, by the name of its locale ("de", "pt_BR"). English is complete; what another
/// lacks is shown in English.
namespace LocalizedTexts {

using Table = QHash<QString, QString>;

/// Those that have a folder, English among them, by name.
[[nodiscard]] QStringList languages();
/// The texts of that language alone; empty for one without a folder.
[[nodiscard]] Table table(const QString& language);

/// The first of the wished languages ("de_AT", "de-AT") that there is, its country left aside where
/// need be; English if there is none.
[[nodiscard]] QString bestLanguage(const QStringList& wished);
/// Texts from here on are of this language; an empty name stands for the best one for the user's
/// locale. Where the language is another one than the locale's, numbers and dates follow it. Until
/// the first call texts are English. Main thread, before others ask for texts.
void setLanguage(const QString& language);
/// That in use.
[[nodiscard]] QString language();

/// What is wrong with the texts of another language, as "key: what": keys that are missing or not
/// known, empty texts, and placeholders that don't take the same arguments in the same way.
[[nodiscard]] QStringList faults(const Table& complete, const Table& other);

} // namespace LocalizedTexts

} // namespace platform
