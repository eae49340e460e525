#include "core/Texts.h"

#include "support/Support.h"

#include <QLocale>

TEST(TextsTest, fileSizesTakeTheUnitOfTheirBound) {
    using PBUtilities::stringWithFileSize;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    using Row = std::pair<std::uint64_t, const char*>;
    // The last is 5.4 MB above a power of two, which a float of 24 bits still tells.
    for (const auto& [size, text] :
         {Row{0, "0 bytes"}, Row{1023, "1,023 bytes"}, Row{1024, "1.0 KB"},
          Row{0xFFFFF, "1,024.0 KB"}, Row{0x100000, "1.0 MB"}, Row{0x3FFFFFFF, "1,024.0 MB"},
          Row{0x40000000, "1.00 GB"}, Row{(1ULL << 40) + 5400000, "1,024.01 GB"}})
        EXPECT_EQ(stringWithFileSize(size), QString::fromLatin1(text));
    QLocale::setDefault(QLocale::c());
}

TEST(TextsTest, cameraDatesParseStrictlyInTheSystemsZone) {
    const support::TimeZone zone("Europe/Berlin");
    EXPECT_EQ(PBUtilities::exifDate(u"2010:07:01 12:00:00"), PBDate{1277978400.0}); // 10:00 UTC
    // 02:30 does not exist on this day: half an hour after 02:00 is 03:30 summer time, 01:30 UTC.
    EXPECT_EQ(PBUtilities::exifDate(u"2010:03:28 02:30:00"), PBDate{1269739800.0});
    for (const char16_t* text :
         {u"", u"0000:00:00 00:00:00", u"2010:02:29 12:00:00", u"2010:07:01 24:00:00",
          u"2010-07-01 12:00:00", u"2010:07:01 12:00", u"2010:07:01 12:00:00 ",
          u"2010:7:01 12:00:000", u"    :  :     :  :  ", u"+010:07:01 12:00:00"})
        EXPECT_FALSE(PBUtilities::exifDate(text)) << QString::fromUtf16(text).toStdString();
}
