#include "info/geo/PBGeoManager.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "info/geo/GeoFakes.h"
#include "platform/OfflineGeocoder.h"
#include "platform/Places.h"

TEST(PBGeoManagerThreadsTest, positionsFromManyThreadsAllFindTheirPlace) {
    FMDatabase db{QString()};
    ASSERT_TRUE(db.open());
    ASSERT_TRUE(PBCatalogue(db).checkTables_FilesDb());
    PostedCalls main;
    PBGeoManager manager(
        std::make_unique<platform::OfflineGeocoder>(
            platform::Places::sharedFile(u"gazetteer.bin"_s), QStringList{u"en"_s}),
        main.poster());
    manager.loadAddressFromDb(db);
    int notices = 0;
    QObject::connect(
        &manager, &PBGeoManager::reverseGeoFinished, &manager, [&notices] { ++notices; });

    constexpr int perThread = 150;
    const auto positionsOf = [](unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> offset(-0.2, 0.2);
        std::vector<PBLocation> positions;
        for (int index = 0; index < perThread; ++index)
            positions.push_back({48.8 + offset(random), 2.3 + offset(random)});
        positions.push_back({-40.0 - seed, -120.0}); // mid-ocean
        return positions;
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned seed = 0; seed < 4; ++seed) {
            threads.emplace_back([&, seed] {
                for (const PBLocation& location : positionsOf(seed))
                    if (manager.addressDictionaryWithLocation(location).isAbsent())
                        manager.addLocationToReverseGeocoding(location);
            });
        }
        // Meanwhile, answers are written here.
        for (int round = 0; round < 1000; ++round)
            main.run();
    }
    const auto isKnown = [&](PBLocation location) {
        return !manager.addressDictionaryWithLocation(location).isAbsent();
    };
    EXPECT_TRUE(support::spinUntil([&] {
        main.run();
        for (unsigned seed = 0; seed < 4; ++seed)
            if (!std::ranges::all_of(positionsOf(seed), isKnown)) return false;
        return true;
    }));
    EXPECT_TRUE(manager.addressDictionaryWithLocation({-40.0, -120.0}).isNull());
    EXPECT_TRUE(manager.addressDictionaryWithLocation({48.8, 2.3}).isDictionary());
    EXPECT_GT(notices, 10);
    FMResultSet row = db.executeQuery(u"select count(*), count(distinct AddressDict) from Geo"_s);
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.intForColumnIndex(0), row.intForColumnIndex(1));
}
