#include "places/PBGeoManager.h"

#include "catalogue/PBCatalogue.h"
#include "places/GeoBlobs.h"
#include "platform/tasks/MainLoop.h"
#include "platform/values/CborValues.h"
#include "support/Rows.h"

namespace {

using places::GeocodeError;

/// A geocoder whose requests wait for the test to answer them, on whatever thread it likes.
struct FakeGeocoder final : places::Geocoder {
    void reverseGeocodeLocation(PBLocation location, Completion completion) override {
        const platform::Lock lock(_mutex);
        _asked.push_back(location);
        _waiting.push_back(std::move(completion));
    }
    void cancelGeocode() override {
        while (answer({{}, places::GeocodeError::Cancelled})) {
        }
    }

    /// Tells the oldest request's answer; false if none waits.
    bool answer(const places::GeocodeAnswer& answer) {
        const platform::Lock lock(_mutex);
        if (_waiting.empty()) return false;
        _waiting.front()(answer); // which the manager posts
        _waiting.pop_front();
        return true;
    }
    [[nodiscard]] bool isWaiting() const {
        const platform::Lock lock(_mutex);
        return !_waiting.empty();
    }
    [[nodiscard]] std::vector<PBLocation> asked() const {
        const platform::Lock lock(_mutex);
        return _asked;
    }

private:
    mutable platform::Mutex _mutex;
    std::vector<PBLocation> _asked VELMORA_GUARDED_BY(_mutex);
    std::deque<Completion> _waiting VELMORA_GUARDED_BY(_mutex);
};

struct PBGeoManagerTest : ::testing::Test {
    PBGeoManagerTest() {
        EXPECT_TRUE(PBCatalogue(_db).checkTables_FilesDb());
        makeManager();
    }

    void makeManager() {
        auto geocoder = std::make_unique<FakeGeocoder>();
        _geocoder = geocoder.get();
        _manager = std::make_unique<PBGeoManager>(
            std::move(geocoder),
            PBGeoManager::Environment{
                .postToMainThread = _post,
                .connect =
                    [this] {
                        auto connection = FMDatabase::databaseWithPath(_db.databasePath());
                        connection->setLongestWait(std::chrono::milliseconds(2));
                        connection->open();
                        return connection;
                    },
                .interval = interval,
                .gathering = gathering});
        _manager->loadAddressFromDb(_db);
        _notices = 0;
        QObject::connect(_manager.get(), &PBGeoManager::reverseGeoFinished, _manager.get(), [this] {
            ++_notices;
        });
    }
    void ask(double latitude, double longitude = 9) {
        _manager->addLocationToReverseGeocoding({latitude, longitude});
        EXPECT_TRUE(support::spinUntil(
            [&] { return _geocoder->isWaiting() || !_manager->hasPendingRequests(); }));
    }

    /// Answers the request in flight and waits until the next one has gone out, if there is any.
    void answer(const places::GeocodeAnswer& answer, std::size_t askedAfterwards) {
        ASSERT_TRUE(_geocoder->answer(answer));
        const auto isSettled = [&] {
            return _geocoder->asked().size() >= askedAfterwards &&
                   (_geocoder->isWaiting() || !_manager->hasPendingRequests());
        };
        ASSERT_TRUE(support::spinUntil(isSettled));
    }
    static places::GeocodeAnswer cityAnswer(const QString& city) {
        return {{{PBDictionary{{u"City"_s, city}}}}, GeocodeError::None};
    }
    void answer(const QString& city, std::size_t askedAfterwards = 1) {
        answer(cityAnswer(city), askedAfterwards);
    }

    QString addressAt(double latitude, double longitude = 9) {
        const auto address = _manager->addressDictionaryWithLocation({latitude, longitude});
        if (address.isAbsent()) return u"absent"_s;
        if (address.isNull()) return u"null"_s;
        return address.dictionary()->at(u"City"_s).toText();
    }

    QStringList rows() { return support::rowsOf(_db, u"select GeoId from Geo"_s); }

    QTemporaryDir _folder;
    support::Database _db{_folder.filePath(u"files.db"_s)};
    std::chrono::milliseconds interval{0};
    std::chrono::milliseconds gathering{0};
    platform::MainLoop _loop;
    const std::function<void(std::function<void()>)> _post = [this](std::function<void()> call) {
        ++_posted;
        _loop.post(platform::MainLoop::Mode::Common, std::move(call));
    };
    FakeGeocoder* _geocoder = nullptr;
    std::unique_ptr<PBGeoManager> _manager;
    int _notices = 0;
    std::atomic<int> _posted = 0;
};

TEST_F(PBGeoManagerTest, neighbourOfAWaitingPositionIsNotAskedFor) {
    ask(48, 181); // none
    ask(48);
    EXPECT_TRUE(_manager->hasPendingRequests());
    ask(48.0009); // 100 m
    ask(50);
    EXPECT_EQ(_geocoder->asked(), (std::vector<PBLocation>{{48, 9}}));
    answer(u"Ulm"_s, 2);
    EXPECT_EQ(_geocoder->asked().back(), (PBLocation{50, 9}));
    answer(u"Fulda"_s, 2);
    EXPECT_EQ(addressAt(48.001), u"Ulm"_s);
    EXPECT_FALSE(_manager->hasPendingRequests());
    // Nothing is left: the next one goes out at once.
    ask(48);
    ask(52);
    EXPECT_EQ(_geocoder->asked().size(), 3u);
}

TEST_F(PBGeoManagerTest, equalAddressGrowsThePlaceAndSurvivesARestart) {
    ask(48);
    answer(u"Ulm"_s);
    ask(48.5, 9.5);
    answer(u"ULM"_s, 2);
    EXPECT_EQ(rows().size(), 1);
    EXPECT_EQ(_notices, 2);
    makeManager();
    EXPECT_EQ(addressAt(48), u"Ulm"_s);
    EXPECT_EQ(addressAt(48.501, 9.5), u"Ulm"_s);
    EXPECT_EQ(addressAt(48.25, 9.25), u"absent"_s);
    ask(48.501, 9.5);
    EXPECT_TRUE(_geocoder->asked().empty());
}

TEST_F(PBGeoManagerTest, whatIsFoundWithinTheIntervalIsStoredTogetherAndToldOnce) {
    ask(11);
    answer(u"Old"_s);
    interval = std::chrono::hours(1);
    makeManager();
    for (const double latitude : {50.0, 20.0, 21.0, 21.0, 10.9, 30.0})
        ask(latitude);
    EXPECT_TRUE(_geocoder->answer(cityAnswer(u"First"_s))); // stored at once: the last is long ago
    EXPECT_TRUE(support::spinUntil([&] { return _notices == 1; }));
    const int before = support::storedChanges(_db);
    for (const char16_t* city : {u"New", u"New", u"Old", u"Far"}) {
        EXPECT_TRUE(support::spinUntil([&] { return _geocoder->isWaiting(); }));
        EXPECT_TRUE(_geocoder->answer(cityAnswer(QString::fromUtf16(city))));
    }
    EXPECT_EQ(_geocoder->asked().size(), 5u) << "a position that waits is asked for once";
    EXPECT_EQ(addressAt(21), u"absent"_s) << "what is not stored is not known";
    EXPECT_TRUE(_manager->hasPendingRequests());
    _manager->finish();
    EXPECT_EQ(support::storedChanges(_db), before + 1);
    makeManager();
    EXPECT_EQ(rows().size(), 4) << "of Old, First, New and Far";
    const QStringList found =
        support::listed(std::array{50.0, 20.0, 21.0, 11.0, 10.9, 30.0}, [&](double latitude) {
            return addressAt(latitude);
        });
    EXPECT_EQ(found.join(u' '), u"First New New Old Old Far");
}

TEST_F(PBGeoManagerTest, aLockedCatalogueTakesThePlaceLater) {
    ASSERT_TRUE(_db.beginTransaction());
    ask(48);
    ASSERT_TRUE(_geocoder->answer(cityAnswer(u"Ulm"_s)));
    EXPECT_TRUE(support::spinUntil([&] { return _posted > 0; })) << "it is put off";
    EXPECT_EQ(_notices, 0);
    EXPECT_TRUE(_db.rollback());
    EXPECT_TRUE(support::spinUntil([&] { return _notices == 1; }));
    EXPECT_EQ(addressAt(48), u"Ulm"_s);
}

TEST_F(PBGeoManagerTest, withoutAnAddressIsRememberedInMemoryOnlyAndNoAnswerDropsThePosition) {
    const std::vector<places::GeocodeAnswer> answers{
        {{}, GeocodeError::NoResult},       {{}, GeocodeError::PartialResult},
        {{}, GeocodeError::Network},        {{}, GeocodeError::None},
        {{{}}, GeocodeError::None},         {{{PBNull{}}}, GeocodeError::None},
        {{{u"text"_s}}, GeocodeError::None}};
    for (unsigned index = 0; index <= answers.size(); ++index)
        ask(10 + index);
    for (unsigned index = 0; index < answers.size(); ++index) {
        answer(answers[index], index + 2);
        EXPECT_EQ(addressAt(10.01 + index), index < 2 ? u"null"_s : u"absent"_s);
        EXPECT_EQ(addressAt(10.1 + index), u"absent"_s);
    }
    EXPECT_EQ(rows(), QStringList());
    EXPECT_EQ(_notices, 0);
    answer(u"Last"_s, answers.size() + 1);
    ask(10.01);
    ask(11.01);
    EXPECT_EQ(_geocoder->asked().size(), answers.size() + 1);
    // Dropped, not forgotten: the next scan asks again.
    ask(12);
    EXPECT_EQ(_geocoder->asked().size(), answers.size() + 2);
}

TEST_F(PBGeoManagerTest, rowsThatCannotBeReadAreSkippedOnLoading) {
    const PBValue blob = GeoBlobs::encodeCoordinates(std::vector{10.0, 20.0, 200.0});
    const PBValue shorter = GeoBlobs::encodeCoordinates(std::vector{11.0});
    const PBValue bad = platform::encodeDictionary({{u"City"_s, u"Bad"_s}});
    const std::array<PBValue, 3> rows[] = {
        {PBNull{}, blob, bad},
        {blob, PBNull{}, bad},
        {blob, blob, PBNull{}},
        {blob, blob, blob},
        {blob, blob, platform::encodeDictionary({{u"City"_s, u"Good"_s}})},
        {blob, shorter, platform::encodeDictionary({{u"City"_s, u"Short"_s}})}};
    for (const auto& [longitude, latitude, dictionary] : rows)
        ASSERT_TRUE(_db.executeUpdate(
            u"insert into Geo (Longitude,Latitude,AddressDict) values (?,?,?)"_s, longitude,
            latitude, dictionary));
    makeManager();
    EXPECT_EQ(addressAt(20, 20), u"Good"_s);
    EXPECT_EQ(addressAt(11, 10), u"Short"_s);
    EXPECT_EQ(addressAt(11, 20), u"absent"_s);
}

TEST_F(PBGeoManagerTest, catalogueThatRefusesANewPlaceLeavesItUnknown) {
    ASSERT_TRUE(_db.executeUpdate(u"drop table Geo"_s));
    ask(48);
    answer(u"Ulm"_s);
    EXPECT_EQ(addressAt(48), u"absent"_s);
    // A notice would have the scan ask again, without end.
    EXPECT_EQ(_notices, 0);
}

TEST_F(PBGeoManagerTest, cancellingDropsWhatWaitsAndLaterRequestsGoOut) {
    ask(48);
    ask(50);
    _manager->cancelReverseGeocoding();
    QCoreApplication::processEvents();
    EXPECT_TRUE(support::spinUntil([&] { return !_manager->hasPendingRequests(); }));
    EXPECT_EQ(addressAt(48), u"absent"_s);
    ask(51);
    EXPECT_EQ(_geocoder->asked(), (std::vector<PBLocation>{{48, 9}, {51, 9}}));
    // What came before the end is stored, and nobody is told any more.
    ASSERT_TRUE(_geocoder->answer(cityAnswer(u"Ulm"_s)));
    _manager.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(rows().size(), 1);
    EXPECT_EQ(_notices, 0);
    gathering = std::chrono::hours(1);
    makeManager();
    _manager->addLocationToReverseGeocoding({52, 9});
    _manager.reset(); // waits for none to come
}

TEST_F(PBGeoManagerTest, withoutAGeocoderNothingIsQueued) {
    PBGeoManager manager(nullptr, {.postToMainThread = _post});
    manager.addLocationToReverseGeocoding({10, 9});
    manager.cancelReverseGeocoding();
    EXPECT_FALSE(manager.hasPendingRequests());
}

} // namespace
