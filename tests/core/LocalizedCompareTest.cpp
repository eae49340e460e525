#include "core/LocalizedCompare.h"
#include "support/Support.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QStringList>

#include <thread>

namespace {

using PBUtilities::localizedStandardCompare;

/// Run in every locale: the C locale has no order of its own.
void expectFileBrowserOrder() {
    const QStringList ordered{QStringLiteral("img_2.jpg"),    QStringLiteral("IMG_10.jpg"),
                              QStringLiteral("img_0100.jpg"), QStringLiteral("zebra"),
                              QStringLiteral("Zoo 9"),        QStringLiteral("zoo 10")};
    for (qsizetype first = 0; first < ordered.size(); ++first) {
        for (qsizetype second = 0; second < ordered.size(); ++second) {
            EXPECT_EQ(
                localizedStandardCompare(ordered[first], ordered[second]), first < second   ? -1
                                                                           : first > second ? 1
                                                                                            : 0)
                << ordered[first].toStdString() << " and " << ordered[second].toStdString();
        }
    }
    EXPECT_EQ(localizedStandardCompare(QStringLiteral("A7.JPG"), QStringLiteral("a007.jpg")), 0);
    EXPECT_EQ(localizedStandardCompare({}, QStringLiteral("a")), -1);
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

TEST(LocalizedCompareTest, orderOutlivesAFullMemoryOfKeys) {
    const auto name = [](int number) { return QStringLiteral("folder %1").arg(number); };
    for (int number = 0; number < 10000; ++number) {
        ASSERT_EQ(localizedStandardCompare(name(number), name(number + 1)), -1);
    }
    EXPECT_EQ(localizedStandardCompare(name(3), name(3).toUpper()), 0);
}

} // namespace
