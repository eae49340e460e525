#include "core/LocalTime.h"
#include "support/Support.h"

#include <QDateTime>

/// Zones with and without summer time, far off UTC on both sides, with changes at midnight and by
/// half an hour.
TEST(LocalTimeTest, agreesWithTheSystemInEveryZone) {
    std::mt19937 random(3);
    for (const char* name :
         {"UTC", "Europe/Berlin", "America/St_Johns", "Pacific/Kiritimati", "Pacific/Pago_Pago",
          "Asia/Kathmandu", "Australia/Lord_Howe", "America/Santiago", "Africa/Casablanca"}) {
        const support::TimeZone zone(name);
        for (int round = 0; round < 3000; ++round) {
            // Half of them in one year, so that its days of change are met.
            const qint64 seconds =
                round % 2 == 0 ? 1'600'000'000 + static_cast<qint64>(random() % 31'557'600)
                               : static_cast<qint64>(random() % 4'000'000'000U) - 1'000'000'000;
            const QDateTime local = QDateTime::fromSecsSinceEpoch(seconds);
            ASSERT_EQ(PBUtilities::localDateOf(seconds), local.date()) << name << ' ' << seconds;
            const qint64 back = PBUtilities::secondsOfLocalTime(local.date(), local.time());
            // Of an hour that comes twice either is right.
            ASSERT_EQ(QDateTime::fromSecsSinceEpoch(back).time(), local.time()) << name;
            ASSERT_LE(std::abs(back - seconds), 3600) << name << ' ' << seconds;
        }
    }
}

TEST(LocalTimeTest, daysBeginAtMidnightBefore1970Too) {
    for (const auto& [name, ahead] : {std::pair("UTC", 0), {"IST-5:30", 19'800}}) {
        const support::TimeZone zone(name);
        for (const qint64 day : {-36'500, -366, -1, 0, 1, 20'000}) {
            const QDate date = QDate(1970, 1, 1).addDays(day);
            const qint64 midnight = day * 86'400 - ahead;
            EXPECT_EQ(PBUtilities::localDateOf(midnight), date) << name;
            EXPECT_EQ(PBUtilities::localDateOf(midnight - 1), date.addDays(-1)) << name;
            EXPECT_EQ(PBUtilities::secondsOfLocalTime(date, QTime(0, 0)), midnight) << name;
        }
    }
}
