#include "core/LocalizedCompare.h"
#include "support/Support.h"

#include <QLocale>

namespace {

using PBUtilities::localizedStandardCompare;

/// Run in every locale: the C locale has no order of its own.
void expectFileBrowserOrder() {
    const QStringList ordered{u"img_2.jpg"_s, u"IMG_10.jpg"_s, u"img_0100.jpg"_s,
                              u"zebra"_s,     u"Zoo 9"_s,      u"zoo 10"_s};
    support::expectAscending(ordered, localizedStandardCompare);
    EXPECT_EQ(localizedStandardCompare(u"A7.JPG"_s, u"a007.jpg"_s), 0);
    EXPECT_EQ(localizedStandardCompare({}, u"a"_s), -1);
}

TEST(LocalizedCompareTest, numbersByValueAndCaseIgnoredInEveryLocale) {
    const QLocale before;
    for (const QLocale& locale :
         {QLocale::c(), QLocale(QLocale::German, QLocale::Germany), before}) {
        QLocale::setDefault(locale);
        // The collator belongs to its thread and is made with the locale of its first use.
        std::thread(expectFileBrowserOrder).join();
    }
    QLocale::setDefault(before);
}

} // namespace
