#include "app/TextLanguage.h"

#include "platform/program/TextLanguages.h"
#include "shell/services/Preferences.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

void useTextLanguage(const Preferences& preferences) {
    using namespace platform;
    LocalizedTexts::setLanguage(preferences.language());
    auto toolkit = std::make_unique<QTranslator>(QCoreApplication::instance());
    // Two languages in one window would be worse than none.
    const bool isThere = toolkit->load(
        QLocale(LocalizedTexts::language()), QStringLiteral("qtbase"), QStringLiteral("_"),
        QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    if (isThere) QCoreApplication::installTranslator(toolkit.release()); // the application owns it
}
