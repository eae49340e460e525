#include "core/LocalTime.h"
#include "support/Support.h"

#include <QDateTime>

/// Zones with and without summer time, far off UTC on both sides, with changes at midnight and by
/// half an hour; days before 1970, and moments at and around midnight.
TEST(LocalTimeTest, agreesWithTheSystemInEveryZone) {
    std::mt19937 random(3);
    for (const char* name :
         {"UTC", "Europe/Berlin", "America/St_Johns", "Pacific/Kiritimati", "Pacific/Pago_Pago",
          "Asia/Kathmandu", "Australia/Lord_Howe", "America/Santiago", "Africa/Casablanca"}) {
        const support::TimeZone zone(name);
        for (int round = 0; round < 3000; ++round) {
            // Half of them in one year, so that its days of change are met.
            qint64 seconds = round % 2 == 0
                                 ? 1'600'000'000 + static_cast<qint64>(random() % 31'557'600)
                                 : static_cast<qint64>(random() % 4'000'000'000U) - 1'000'000'000;
            if (round % 4 > 1) seconds -= seconds % 900 + round % 3 - 1;
            const QDateTime local = QDateTime::fromSecsSinceEpoch(seconds);
            ASSERT_EQ(PBUtilities::localDateOf(seconds), local.date()) << name << ' ' << seconds;
            const qint64 back = PBUtilities::secondsOfLocalTime(local.date(), local.time());
            // Of an hour that comes twice either is right.
            ASSERT_EQ(QDateTime::fromSecsSinceEpoch(back).time(), local.time()) << name;
            ASSERT_LE(std::abs(back - seconds), 3600) << name << ' ' << seconds;
        }
    }
}
