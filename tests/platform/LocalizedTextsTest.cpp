#include "platform/LocalizedTexts.h"

#include "support/Support.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

TEST(LocalizedTextsTest, everyKindOfPlaceholderIsFilledIn) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    using platform::formatText;
    EXPECT_EQ(formatText(u"%@ of %d", {QStringLiteral("a"), 1234}), QStringLiteral("a of 1,234"));
    EXPECT_EQ(formatText(u"%2$@-%1$@", {1, 2}), QStringLiteral("2-1"));
    EXPECT_EQ(formatText(u"%.1f %% %ld", {2.25, 7}), QStringLiteral("2.3 % 7"));
    EXPECT_EQ(
        formatText(u"100% %q %@ %@", {QStringLiteral("%@")}), QStringLiteral("100% %q %@ %@"));
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(formatText(u"%.2f", {1.5}), QStringLiteral("1,50"));
    QLocale::setDefault(QLocale::c());
}

TEST(LocalizedTextsTest, keysOfAllTablesAreFoundAndUnknownOnesStandForThemselves) {
    EXPECT_EQ(platform::localizedString(u"NoStar"), QStringLiteral("No stars"));
    EXPECT_EQ(platform::localizedFormat(u"month_3", {2024}), QStringLiteral("March 2024"));
    EXPECT_EQ(platform::localizedString(u"no such key"), QStringLiteral("no such key"));
}

TEST(LocalizedTextsTest, everyKeyThatTheSourcesNameHasItsText) {
    static const QRegularExpression named(QStringLiteral(
        R"re(localized(?:String|Format)\(\s*(?:QStringLiteral\()?u?"(\w[^"%]*)")re"));
    QSet<QString> keys;
    QDirIterator sources(
        QStringLiteral(VELMORA_SOURCES), {QStringLiteral("*.cpp")}, QDir::Files,
        QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        auto matches = named.globalMatch(QString::fromUtf8(support::readFile(sources.next())));
        while (matches.hasNext())
            keys.insert(matches.next().captured(1));
    }
    EXPECT_GT(keys.size(), 50);
    (void)platform::localizedString(u"NoStar"); // loads the tables
    QDirIterator tables(QStringLiteral(":/texts/en"));
    while (tables.hasNext()) {
        for (const QString& key :
             QJsonDocument::fromJson(support::readFile(tables.next())).object().keys())
            keys.remove(key);
    }
    EXPECT_EQ(keys.values().join(u' ').toStdString(), "");
}

} // namespace
