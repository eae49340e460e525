#include "platform/program/LocalizedTexts.h"
#include "platform/program/HarmlessText.h"

#include "support/Support.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

TEST(LocalizedTextsTest, everyKindOfPlaceholderIsFilledIn) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    using platform::formatText;
    EXPECT_EQ(formatText(u"%@ of %d", {u"a"_s, 1234}), u"a of 1,234"_s);
    EXPECT_EQ(formatText(u"%2$@-%1$@", {1, 2}), u"2-1"_s);
    EXPECT_EQ(formatText(u"%.1f %% %ld %f", {2.25, 7, 0.5}), u"2.3 % 7 0.500000"_s);
    EXPECT_EQ(formatText(u"100% %q %@ %@", {u"%@"_s}), u"100% %q %@ %@"_s);
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(formatText(u"%.2f", {1.5}), u"1,50"_s);
    QLocale::setDefault(QLocale::c());
}

TEST(LocalizedTextsTest, namesThatTurnTheDirectionAreShownHarmless) {
    const QString hebrew = u"\u05e9\u05dc"_s;
    EXPECT_EQ(platform::harmlessText(u"a\u202egpj.exe"_s), u"a\ufffdgpj.exe");
    EXPECT_EQ(platform::harmlessText(u"\u202a\u2069"_s), u"\ufffd\ufffd");
    EXPECT_EQ(platform::harmlessText(hebrew + u'\u200f'), hebrew + u'\u200f');
    EXPECT_EQ(
        platform::formatText(u"%@: %@", {PBValue(hebrew), PBValue(u"b\u2066c"_s)}),
        u'\u2068' + hebrew + u"\u2069: b\ufffdc"_s);
}

TEST(LocalizedTextsTest, everyKeyThatTheSourcesNameHasItsText) {
    auto keys = support::namesInSources(
        QStringLiteral(VELMORA_SOURCES),
        uR"re(localized(?:String|Format)\(\s*(?:QStringLiteral\()?u?"(\w[^"%]*)")re"_s);
    EXPECT_GT(keys.size(), 50);
    (void)platform::localizedString(u"NoStar"); // loads the tables
    QDirIterator tables(u":/texts/en"_s);
    while (tables.hasNext())
        for (const QString& key :
             QJsonDocument::fromJson(support::readFile(tables.next())).object().keys())
            keys.remove(key);
    EXPECT_EQ(keys.values().join(u' ').toStdString(), "");
}
