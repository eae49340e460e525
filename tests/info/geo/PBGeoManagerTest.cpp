#include "info/geo/PBGeoManager.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "info/geo/GeoBlobs.h"
#include "info/geo/GeoFakes.h"

namespace {

using platform::GeocodeError;

struct PBGeoManagerTest : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(_db.open());
        ASSERT_TRUE(PBCatalogue(_db).checkTables_FilesDb());
        makeManager();
    }

    void makeManager() {
        auto geocoder = std::make_unique<FakeGeocoder>();
        _geocoder = geocoder.get();
        _manager = std::make_unique<PBGeoManager>(std::move(geocoder), _main.poster());
        _manager->loadAddressFromDb(_db);
        _notices = 0;
        QObject::connect(_manager.get(), &PBGeoManager::reverseGeoFinished, _manager.get(), [this] {
            ++_notices;
        });
    }

    /// Answers the request in flight and waits until the next one has gone out, if there is any.
    void answer(const platform::GeocodeAnswer& answer, std::size_t askedAfterwards) {
        ASSERT_TRUE(_geocoder->answer(answer));
        _main.run();
        ASSERT_TRUE(
            support::spinUntil([&] { return _geocoder->asked().size() >= askedAfterwards; }));
    }

    QString addressAt(PBLocation location) {
        const PBValue address = _manager->addressDictionaryWithLocation(location);
        if (address.isAbsent()) return u"absent"_s;
        if (address.isNull()) return u"null"_s;
        return address.dictionary()->at(u"City"_s).toText();
    }

    /// Each row as its address and its pairs of longitude and latitude.
    QStringList rows() {
        QStringList texts;
        FMResultSet row =
            _db.executeQuery(u"select AddressDict,Longitude,Latitude from Geo order by GeoId"_s);
        while (row.next()) {
            const auto longitudes = GeoBlobs::decodeCoordinates(row.dataForColumnIndex(1)).value();
            const auto latitudes = GeoBlobs::decodeCoordinates(row.dataForColumnIndex(2)).value();
            QString text =
                GeoBlobs::decodeAddress(row.dataForColumnIndex(0))->at(u"City"_s).toText();
            for (std::size_t index = 0; index < longitudes.size(); ++index)
                text += u" %1/%2"_s.arg(longitudes[index]).arg(latitudes.at(index));
            texts.append(text);
        }
        return texts;
    }

    FMDatabase _db{QString()};
    PostedCalls _main;
    FakeGeocoder* _geocoder = nullptr;
    std::unique_ptr<PBGeoManager> _manager;
    int _notices = 0;
};

TEST_F(PBGeoManagerTest, neighbourOfAWaitingPositionIsNotAskedFor) {
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    _manager->addLocationToReverseGeocoding({48.0009, 9.0}); // 100 m
    _manager->addLocationToReverseGeocoding({50.0, 9.0});
    _manager->tryDoReverseGeocoding();
    EXPECT_EQ(_geocoder->asked(), (std::vector<PBLocation>{{48.0, 9.0}}));
    answer(cityAnswer(u"Ulm"_s), 2);
    EXPECT_EQ(_geocoder->asked().back(), (PBLocation{50.0, 9.0}));
    EXPECT_EQ(addressAt({48.001, 9.0}), u"Ulm"_s);
    EXPECT_EQ(rows(), QStringList{u"Ulm 9/48"_s});
    answer(cityAnswer(u"Fulda"_s), 2);
    EXPECT_EQ(_notices, 2);
    // Nothing is left: the next one goes out at once.
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    _manager->addLocationToReverseGeocoding({52.0, 9.0});
    EXPECT_EQ(_geocoder->asked().size(), 3u);
    EXPECT_EQ(_geocoder->mostWaiting(), 1u);
}

TEST_F(PBGeoManagerTest, equalAddressGrowsThePlaceAndSurvivesARestart) {
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    answer(cityAnswer(u"Ulm"_s), 1);
    _manager->addLocationToReverseGeocoding({48.5, 9.5});
    answer(cityAnswer(u"ULM"_s), 2);
    EXPECT_EQ(rows(), QStringList{u"Ulm 9/48 9.5/48.5"_s});
    EXPECT_EQ(_notices, 2);
    makeManager();
    EXPECT_EQ(addressAt({48.0, 9.0}), u"Ulm"_s);
    EXPECT_EQ(addressAt({48.501, 9.5}), u"Ulm"_s);
    EXPECT_EQ(addressAt({48.25, 9.25}), u"absent"_s);
    _manager->addLocationToReverseGeocoding({48.501, 9.5});
    EXPECT_TRUE(_geocoder->asked().empty());
}

TEST_F(PBGeoManagerTest, positionsWithoutAnAddressAreRememberedInMemoryOnly) {
    for (const GeocodeError error : {GeocodeError::NoResult, GeocodeError::PartialResult}) {
        const PBLocation location{static_cast<int>(error) * 1.0, 0.5};
        _manager->addLocationToReverseGeocoding(location);
        answer({{}, error}, 1);
        EXPECT_EQ(addressAt({location.latitude + 0.01, 0.5}), u"null"_s);
        EXPECT_EQ(addressAt({location.latitude + 0.1, 0.5}), u"absent"_s);
        _manager->addLocationToReverseGeocoding({location.latitude + 0.01, 0.5});
    }
    EXPECT_EQ(_geocoder->asked().size(), 2u);
    EXPECT_EQ(rows(), QStringList());
    EXPECT_EQ(_notices, 0);
    makeManager();
    EXPECT_EQ(addressAt({8.0, 0.5}), u"absent"_s);
}

TEST_F(PBGeoManagerTest, answersThatTellNothingDropThePositionAndGoOn) {
    const std::vector<platform::GeocodeAnswer> answers{
        {{}, GeocodeError::Network},
        {{}, GeocodeError::None},
        {{{}}, GeocodeError::None},
        {{{PBNull{}}}, GeocodeError::None},
        {{{u"text"_s}}, GeocodeError::None}};
    for (std::size_t index = 0; index <= answers.size(); ++index)
        _manager->addLocationToReverseGeocoding({10.0 + static_cast<double>(index), 1});
    for (std::size_t index = 0; index < answers.size(); ++index) {
        answer(answers[index], index + 2);
        EXPECT_EQ(addressAt({10.0 + static_cast<double>(index), 1}), u"absent"_s);
    }
    EXPECT_EQ(_notices, 0);
    answer(cityAnswer(u"Last"_s), answers.size() + 1);
    // Dropped, not forgotten: the next scan asks again.
    _manager->addLocationToReverseGeocoding({10.0, 1});
    EXPECT_EQ(_geocoder->asked().size(), answers.size() + 2);
}

TEST_F(PBGeoManagerTest, rowsThatCannotBeReadAreSkippedOnLoading) {
    const QByteArray coordinates = GeoBlobs::encodeCoordinates(std::vector{10.0, 20.0, 200.0});
    const QByteArray shorter = GeoBlobs::encodeCoordinates(std::vector{11.0});
    const QByteArray address = GeoBlobs::encodeAddress(cityAddress(u"Good"_s));
    const std::array<PBValue, 3> rows[] = {
        {PBNull{}, coordinates, address},
        {coordinates, PBNull{}, address},
        {coordinates, coordinates, PBNull{}},
        {QByteArray("junk"), coordinates, address},
        {coordinates, QByteArray::fromHex("9bffffffffffffffff"), address},
        {coordinates, coordinates, coordinates},
        {u"text"_s, 7, address},
        {coordinates, coordinates, address},
        {coordinates, shorter, GeoBlobs::encodeAddress(cityAddress(u"Short"_s))}};
    for (const auto& [longitude, latitude, dictionary] : rows)
        ASSERT_TRUE(_db.executeUpdate(
            u"insert into Geo (Longitude,Latitude,AddressDict) values (?,?,?)"_s, longitude,
            latitude, dictionary));
    makeManager();
    EXPECT_EQ(addressAt({10, 10}), u"Good"_s);
    EXPECT_EQ(addressAt({20, 20}), u"Good"_s);
    EXPECT_EQ(addressAt({11, 10}), u"Short"_s);
    EXPECT_EQ(addressAt({11, 20}), u"absent"_s);
}

TEST_F(PBGeoManagerTest, catalogueThatRefusesANewPlaceLeavesItUnknown) {
    ASSERT_TRUE(_db.executeUpdate(u"drop table Geo"_s));
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    answer(cityAnswer(u"Ulm"_s), 1);
    EXPECT_EQ(addressAt({48.0, 9.0}), u"absent"_s);
    // A notice would have the scan ask again, without end.
    EXPECT_EQ(_notices, 0);
}

TEST_F(PBGeoManagerTest, cancellingDropsWhatWaitsAndLaterRequestsGoOut) {
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    _manager->addLocationToReverseGeocoding({50.0, 9.0});
    _manager->cancelReverseGeocoding();
    _main.run();
    EXPECT_EQ(addressAt({48.0, 9.0}), u"absent"_s);
    _manager->addLocationToReverseGeocoding({51.0, 9.0});
    EXPECT_EQ(_geocoder->asked(), (std::vector<PBLocation>{{48.0, 9.0}, {51.0, 9.0}}));
}

TEST_F(PBGeoManagerTest, answerThatArrivesAfterTheEndIsDropped) {
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    ASSERT_TRUE(_geocoder->answer(cityAnswer(u"Ulm"_s)));
    _manager.reset();
    _main.run();
    EXPECT_EQ(rows(), QStringList());
}

TEST_F(PBGeoManagerTest, withoutAGeocoderKnownPlacesAreKnownAndNothingIsQueued) {
    _manager->addLocationToReverseGeocoding({48.0, 9.0});
    answer(cityAnswer(u"Ulm"_s), 1);
    PBGeoManager manager(nullptr, _main.poster());
    EXPECT_FALSE(manager.canUseGeocoder());
    EXPECT_TRUE(manager.addressDictionaryWithLocation({48.0, 9.0}).isAbsent());
    manager.loadAddressFromDb(_db);
    EXPECT_TRUE(manager.addressDictionaryWithLocation({48.0, 9.0}).isDictionary());
    manager.addLocationToReverseGeocoding({10.0, 9.0});
    manager.tryDoReverseGeocoding();
    manager.cancelReverseGeocoding();
}

} // namespace
