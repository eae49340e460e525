#include "platform/program/LocalizedTexts.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/TextLanguages.h"

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
    EXPECT_EQ(platform::briefText(u" a\n b "_s, 3), u"a b");
    EXPECT_EQ(platform::briefText(u"a\U0001F600bc\U0001F600d"_s, 4), u"a\u2026d");
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

namespace texts = platform::LocalizedTexts;

TEST(LocalizedTextsTest, everyLanguageHasEachTextOfEnglishWithTheSamePlaceholders) {
    const texts::Table english = texts::table(u"en"_s);
    const QStringList languages = texts::languages();
    EXPECT_GT(languages.size(), 1);
    for (const QString& language : languages)
        EXPECT_EQ(
            texts::faults(english, texts::table(language)).join(u'\n').toStdString(), std::string())
            << qPrintable(language);

    const texts::Table made{{u"a"_s, u"%@ of %d"_s}, {u"b"_s, u"%1$@, 100 %%"_s}, {u"c"_s, {}}};
    const std::pair<texts::Table, QString> rows[] = {
        {{{u"a"_s, u"%2$d/%1$@"_s}, {u"b"_s, u"%@"_s}, {u"c"_s, {}}}, {}},
        {{{u"a"_s, u"%d of %@"_s}, {u"b"_s, u"%@ %@"_s}, {u"c"_s, u"c"_s}},
         u"a: other placeholders b: other placeholders c: empty"_s},
        {{{u"a"_s, {}}, {u"d"_s, u"d"_s}}, u"a: empty b: missing c: missing d: unknown"_s}};
    for (const auto& [other, faults] : rows)
        EXPECT_EQ(texts::faults(made, other).join(u' '), faults);
}

TEST(LocalizedTextsTest, aLanguageIsChosenByWishAndItsNumbersFollow) {
    for (const auto& [wished, best] : std::map<QString, QString>{
             {u"de"_s, u"de"_s},
             {u"de-AT"_s, u"de"_s},
             {u"xx de_Latn_CH en"_s, u"de"_s},
             {u"en-GB de"_s, u"en"_s},
             {u"xx C"_s, u"en"_s},
             {{}, u"en"_s}})
        EXPECT_EQ(texts::bestLanguage(wished.split(u' ')), best) << qPrintable(wished);
    texts::setLanguage(u"de"_s);
    EXPECT_EQ(platform::localizedString(u"Stars"), u"%d Sterne");
    EXPECT_EQ(platform::localizedFormat(u"FileSize_MB", {1.5}), u"1,5 MB");
    texts::setLanguage(u"xx"_s);
    EXPECT_EQ(texts::language(), u"en");
    EXPECT_EQ(platform::localizedString(u"Stars"), u"%d stars");
    QLocale::setDefault(QLocale::c());
}
