#include "platform/LocalizedTexts.h"

#include "support/Support.h"

#include <QLocale>

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

} // namespace
