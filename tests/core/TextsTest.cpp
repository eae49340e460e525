#include "core/Texts.h"

#include "support/Support.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

/// Runs the rest of the scope in another time zone.
class TimeZoneScope {
public:
    explicit TimeZoneScope(const char* zone) : _before(qgetenv("TZ")) {
        qputenv("TZ", zone);
        tzset();
    }
    ~TimeZoneScope() {
        if (_before.isNull()) {
            qunsetenv("TZ");
        } else {
            qputenv("TZ", _before);
        }
        tzset();
    }
    TimeZoneScope(const TimeZoneScope&) = delete;
    TimeZoneScope& operator=(const TimeZoneScope&) = delete;

private:
    QByteArray _before;
};

TEST(TextsTest, fileSizesTakeTheUnitOfTheirBound) {
    using PBUtilities::stringWithFileSize;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(stringWithFileSize(0), QStringLiteral("0 bytes"));
    EXPECT_EQ(stringWithFileSize(1023), QStringLiteral("1,023 bytes"));
    EXPECT_EQ(stringWithFileSize(1024), QStringLiteral("1.0 KB"));
    EXPECT_EQ(stringWithFileSize(0xFFFFF), QStringLiteral("1,024.0 KB"));
    EXPECT_EQ(stringWithFileSize(0x100000), QStringLiteral("1.0 MB"));
    EXPECT_EQ(stringWithFileSize(0x3FFFFFFF), QStringLiteral("1,024.0 MB"));
    EXPECT_EQ(stringWithFileSize(0x40000000), QStringLiteral("1.00 GB"));
    // 2^40 + 0.005 GB is 5.4 MB above a power of two, which a float of 24 bits still tells.
    EXPECT_EQ(stringWithFileSize((1ULL << 40) + 5400000), QStringLiteral("1,024.01 GB"));
    QLocale::setDefault(QLocale::c());
}

TEST(TextsTest, everyNewlineCharacterBecomesABlank) {
    EXPECT_EQ(
        PBUtilities::removeNewline(QStringLiteral("a\r\nb\u2028c\td\u0085")),
        QStringLiteral("a  b c\td "));
    EXPECT_TRUE(PBUtilities::isEmptyOrWhitespace(u" \t\r\n\u3000\u2029"));
    EXPECT_TRUE(PBUtilities::isEmptyOrWhitespace(u""));
    EXPECT_FALSE(PBUtilities::isEmptyOrWhitespace(u" . "));
}

TEST(TextsTest, cameraDatesParseStrictlyInTheSystemsZone) {
    const TimeZoneScope zone("Europe/Berlin");
    const auto date = PBUtilities::exifDate(u"2010:07:01 12:00:00");
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->secondsSince1970, 1277978400.0); // 10:00 UTC
    // 02:30 does not exist on this day: half an hour after 02:00 is 03:30 summer time, 01:30 UTC.
    const auto skipped = PBUtilities::exifDate(u"2010:03:28 02:30:00");
    ASSERT_TRUE(skipped.has_value());
    EXPECT_EQ(skipped->secondsSince1970, 1269739800.0);
    for (const char16_t* text :
         {u"", u"0000:00:00 00:00:00", u"2010:02:29 12:00:00", u"2010:07:01 24:00:00",
          u"2010-07-01 12:00:00", u"2010:07:01 12:00", u"2010:07:01 12:00:00 ",
          u"2010:7:01 12:00:000", u"    :  :     :  :  ", u"+010:07:01 12:00:00"})
        EXPECT_FALSE(PBUtilities::exifDate(text)) << QString::fromUtf16(text).toStdString();
}

} // namespace
