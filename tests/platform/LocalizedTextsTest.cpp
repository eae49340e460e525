#include "platform/LocalizedTexts.h"

#include "support/Support.h"

#include <QLocale>

TEST(LocalizedTextsTest, everyKindOfPlaceholderIsFilledIn) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    using platform::formatText;
    EXPECT_EQ(formatText(u"%@ of %d", {u"a"_s, 1234}), u"a of 1,234"_s);
    EXPECT_EQ(formatText(u"%2$@-%1$@", {1, 2}), u"2-1"_s);
    EXPECT_EQ(formatText(u"%.1f %% %ld", {2.25, 7}), u"2.3 % 7"_s);
    EXPECT_EQ(formatText(u"100% %q %@ %@", {u"%@"_s}), u"100% %q %@ %@"_s);
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(formatText(u"%.2f", {1.5}), u"1,50"_s);
    QLocale::setDefault(QLocale::c());
}
