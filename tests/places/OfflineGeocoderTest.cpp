#include "places/OfflineGeocoder.h"

#include "places/CountryNames.h"
#include "places/PlaceEntry.h"
#include "platform/program/StandardFolders.h"
#include "support/Support.h"

#include <QtEndian>
#include <future>
#include <zlib.h>

using places::Gazetteer;
using places::GeocodeAnswer;
using places::GeocodeError;
using places::OfflineGeocoder;
using places::PlaceLookup;

namespace {

const QStringList english{u"en-GB"_s, u"en"_s};

QString gazetteerPath() {
    return platform::StandardFolders::sharedFile(u"gazetteer.bin"_s);
}

// City, SubLocality, State, Country and Name, with "-" for a missing one.
QString summary(const std::optional<PBDictionary>& address) {
    if (!address) return u"nothing"_s;
    QStringList texts;
    for (const char* key : {"City", "SubLocality", "State", "Country", "Name"}) {
        const auto found = address->find(QString::fromLatin1(key));
        texts << (found == address->end() ? u"-"_s : found->second.toText());
    }
    return texts.join(u'|');
}

TEST(PlaceLookupTest, knownPositionsHaveTheAddressAPhotographerExpects) {
    PlaceLookup lookup(gazetteerPath(), english);
    const std::vector<std::tuple<PBLocation, QString>> table{
        {{52.4997, 13.4034}, u"Berlin|Kreuzberg|State of Berlin|Germany|Kreuzberg"_s},
        {{40.758, -73.9855}, u"New York City|Times Square|New York|United States|Times Square"_s},
        // Towns on both sides of a border, 1.1 km apart.
        {{47.6603, 9.1758}, u"Konstanz|-|Baden-Wurttemberg|Germany|Konstanz"_s},
        {{47.6505, 9.175}, u"Kreuzlingen|-|Thurgau|Switzerland|Kreuzlingen"_s},
        // A state without divisions.
        {{1.2834, 103.8607}, u"Singapore|Marina Bay|-|Singapore|Marina Bay"_s},
        // A station on the ice.
        {{-77.8463, 166.6683}, u"McMurdo Station|-|-|Antarctica|McMurdo Station"_s},
        // A hundred kilometres west of Saint Helena, and some metres more.
        {{-15.95, -6.655}, u"Half Tree Hollow|-|Saint Helena|St Helena|Half Tree Hollow"_s},
        {{-15.95, -6.656}, u"nothing"_s}};
    for (const auto& [location, expected] : table)
        EXPECT_EQ(summary(lookup.addressOf(location)), expected);
    // On both sides of the antimeridian.
    const QString west = summary(lookup.addressOf(PBLocation{-16.8, 179.999}));
    EXPECT_TRUE(west.contains(u"Fiji")) << qPrintable(west);
    EXPECT_EQ(summary(lookup.addressOf(PBLocation{-16.8, -179.999})), west);
}

TEST(PlaceLookupTest, gazetteerThatCannotBeUsedIsToldOnceAndNamesNothing) {
    ::testing::internal::CaptureStderr();
    PlaceLookup lookup(u"/no/such/gazetteer.bin"_s, english);
    for (const PBLocation location :
         {PBLocation{91, 0}, PBLocation{52.5, 13.4}, PBLocation{48, 11}})
        EXPECT_FALSE(lookup.addressOf(location));
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("/no/such/gazetteer.bin"), std::string::npos);
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1);
    // Where it shows at once, there is no geocoder.
    EXPECT_TRUE(OfflineGeocoder::ofGazetteer(gazetteerPath(), english));
    for (const QString& path : {u"/no/such/gazetteer.bin"_s, u"/dev/null"_s, u"/proc/self/exe"_s})
        EXPECT_FALSE(OfflineGeocoder::ofGazetteer(path, english));
}

TEST(CountryNamesTest, firstLanguageThatHasANameGivesIt) {
    const std::tuple<QString, const char*, QString> cases[] = {
        {u"DE"_s, "zh-Hans-CN", u"德国"_s},
        {u"DE"_s, "qq-ZZ es", u"Alemania"_s},
        {u"DE"_s, "", u"Germany"_s},
        {u"QZ"_s, "de", u"QZ"_s}};
    for (const auto& [code, languages, name] : cases)
        EXPECT_EQ(places::countryName(code, support::words(languages)), name);
}

TEST(OfflineGeocoderTest, eachRequestIsAnsweredAtOnce) {
    OfflineGeocoder geocoder(gazetteerPath(), english);
    std::vector<GeocodeAnswer> answers;
    for (const PBLocation location : {PBLocation{0, 0}, PBLocation{48.1, 11.6}})
        geocoder.reverseGeocodeLocation(
            location, [&](const GeocodeAnswer& answer) { answers.push_back(answer); });
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].error, GeocodeError::NoResult) << "the ocean";
    EXPECT_TRUE(answers[0].placemarks.empty());
    EXPECT_EQ(answers[1].error, GeocodeError::None);
    EXPECT_TRUE(answers[1].placemarks.at(0).addressDictionary.isDictionary());
}

TEST(GazetteerTest, treeSearchFindsWhatALinearSearchFinds) {
    QString reason;
    const auto gazetteer = Gazetteer::open(gazetteerPath(), &reason);
    ASSERT_TRUE(gazetteer) << qPrintable(reason);
    std::vector<PBLocation> targets{{90, 0},       {-90, 0},      {0, 0},
                                    {-16.8, 180},  {-16.8, -180}, {66, 179.9999},
                                    {66, -179.99}, {89.9, 12},    {-48.87, -123.4}};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> latitude(-60, 75);
    std::uniform_real_distribution<double> longitude(-180, 180);
    while (targets.size() < 40)
        targets.push_back({latitude(random), longitude(random)});
    for (const PBLocation& target : targets) {
        double best = std::numeric_limits<double>::max();
        for (std::uint32_t place = 0; place < gazetteer->placeCount(); ++place)
            best = std::min(best, distanceFromLocation(target, gazetteer->location(place)));
        const auto found = gazetteer->nearest(target, 2.1e7);
        ASSERT_TRUE(found) << target.latitude << " " << target.longitude;
        // Coordinates are stored to about half a metre.
        EXPECT_NEAR(found->distance, best, 2 + best * 1e-5);
        const double away = distanceFromLocation(target, gazetteer->location(found->place));
        EXPECT_NEAR(away, best, 2 + best * 1e-5);
        EXPECT_FALSE(gazetteer->nearest(target, best * 0.99 - 2));
    }
    for (const PBLocation none : {PBLocation{-90.001, 0}, PBLocation{0, NAN}})
        EXPECT_FALSE(gazetteer->nearest(none, 1e9));
}

// The file with one 32-bit word replaced and, if told to, its checksum made right again.
QByteArray withWord(QByteArray bytes, qsizetype offset, quint32 word, bool rightChecksum) {
    qToLittleEndian(word, bytes.data() + offset);
    if (rightChecksum) {
        const auto sum = crc32_z(
            0, reinterpret_cast<const Bytef*>(bytes.constData()) + 36,
            static_cast<z_size_t>(bytes.size() - 36));
        qToLittleEndian(static_cast<quint32>(sum), bytes.data() + 32);
    }
    return bytes;
}

TEST(GazetteerTest, damagedFilesAreRefusedWithAReason) {
    const QByteArray good = support::readFile(gazetteerPath());
    const auto word = [&good](qsizetype offset) {
        return qFromLittleEndian<quint32>(good.data() + offset);
    };
    const qsizetype places = word(16);
    const qsizetype placeRecords = 36 + places * 12;
    const qsizetype quarters = placeRecords + places * 8;
    const qsizetype divisions = quarters + qsizetype{word(20)} * 4;

    const std::vector<std::pair<const char*, QByteArray>> damaged{
        {"empty", {}},
        {"half a header", good.left(20)},
        {"cut", good.left(good.size() - 1)},
        {"something else", withWord(good, 0, 0, true)},
        {"other version", withWord(good, 8, 2, true)},
        {"no leaf", withWord(good, 12, 0, true)},
        {"huge counts", withWord(good, 16, 0xffffffff, true)},
        {"flipped bit in a point", withWord(good, 4000, word(4000) ^ 1, false)},
        {"leaf too large", withWord(good, 12, 1025, true)},
        {"name out of bounds", withWord(good, placeRecords, word(28), true)},
        {"division out of bounds", withWord(good, placeRecords + 4, word(24), true)},
        {"quarter out of bounds", withWord(good, placeRecords + 4, (word(20) + 1) << 16, true)},
        {"city out of bounds", withWord(good, quarters, static_cast<quint32>(places), true)},
        {"division's name out of bounds", withWord(good, divisions, word(28), true)},
        {"last name without end", withWord(good, good.size() - 4, 0x41414141, true)}};
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"g.bin"_s);
    QString reason;
    for (const auto& [what, bytes] : damaged) {
        support::writeFile(path, bytes);
        reason.clear();
        EXPECT_EQ(Gazetteer::open(path, &reason), nullptr) << what;
        EXPECT_FALSE(reason.isEmpty()) << what;
    }
    support::writeFile(path, withWord(good, 12, 1024, true));
    EXPECT_NE(Gazetteer::open(path, &reason), nullptr);
    QByteArray empty = good.left(36) + '\0';
    for (const qsizetype count : {16, 20, 24})
        qToLittleEndian<quint32>(0, empty.data() + count);
    support::writeFile(path, withWord(empty, 28, 1, true));
    const auto gazetteer = Gazetteer::open(path, &reason);
    ASSERT_NE(gazetteer, nullptr) << qPrintable(reason);
    EXPECT_FALSE(gazetteer->nearest({0, 0}, 1e9));
}

} // namespace
