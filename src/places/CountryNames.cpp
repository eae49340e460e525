#include "places/CountryNames.h"

#include <unicode/uloc.h>

#include <array>

namespace places {

namespace {

/// Empty if the language has no name of its own for the country.
QString nameInLanguage(const QString& code, const QString& language) {
    std::array<char16_t, 128> text{};
    UErrorCode status = U_ZERO_ERROR;
    const auto length = uloc_getDisplayCountry(
        ("und-" + code.toLatin1()).constData(), language.toLatin1().constData(), text.data(),
        static_cast<int32_t>(text.size()), &status);
    // The default or the root stands in for a language that is not known.
    if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING || length <= 0) return {};
    const auto name = QString::fromUtf16(text.data(), length);
    return name == code ? QString() : name;
}

} // namespace

QString countryName(const QString& code, const QStringList& languages) {
    for (const QString& language : languages + QStringList{QStringLiteral("en")}) {
        const QString name = nameInLanguage(code, language);
        if (!name.isEmpty()) return name;
    }
    return code;
}

} // namespace places
