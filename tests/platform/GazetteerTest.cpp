#include "platform/Gazetteer.h"
#include "platform/Places.h"
#include "support/Support.h"

#include <QtEndian>

#include <zlib.h>

#include <numbers>

namespace {

using platform::Gazetteer;

QString installedPath() {
    return platform::Places::sharedFile(u"gazetteer.bin"_s);
}

std::shared_ptr<const Gazetteer> installed() {
    QString reason;
    static const auto gazetteer = Gazetteer::open(installedPath(), &reason);
    EXPECT_NE(gazetteer, nullptr) << qPrintable(reason);
    return gazetteer;
}

double haversine(PBLocation left, PBLocation right) {
    const double degree = std::numbers::pi / 180;
    const double north = std::sin((left.latitude - right.latitude) * degree / 2);
    const double east = std::sin((left.longitude - right.longitude) * degree / 2);
    const double square = north * north + std::cos(left.latitude * degree) *
                                              std::cos(right.latitude * degree) * east * east;
    return 2 * platform::earthRadius * std::asin(std::min(1.0, std::sqrt(square)));
}

TEST(GazetteerTest, treeSearchFindsWhatALinearSearchFinds) {
    const auto gazetteer = installed();
    std::vector<PBLocation> places;
    for (std::uint32_t index = 0; index < gazetteer->placeCount(); ++index)
        places.push_back(gazetteer->location(index));
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
        for (const PBLocation& place : places)
            best = std::min(best, haversine(target, place));
        const auto found = gazetteer->nearest(target, 2.1e7);
        ASSERT_TRUE(found) << target.latitude << " " << target.longitude;
        // Coordinates are stored to about half a metre.
        EXPECT_NEAR(found->distance, best, 2 + best * 1e-5);
        EXPECT_NEAR(haversine(target, places[found->place]), best, 2 + best * 1e-5);
        EXPECT_FALSE(gazetteer->nearest(target, best * 0.99 - 2));
    }
}

TEST(GazetteerTest, positionsThatAreNoneHaveNoNearestPlace) {
    const double infinite = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const PBLocation location :
         {PBLocation{91, 0}, PBLocation{-90.001, 0}, PBLocation{0, 180.1},
          PBLocation{notANumber, 0}, PBLocation{0, notANumber}, PBLocation{infinite, 0},
          PBLocation{0, -infinite}})
        EXPECT_FALSE(installed()->nearest(location, 1e9));
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
    const QByteArray good = support::readFile(installedPath());
    ASSERT_GT(good.size(), 1'000'000);
    const auto word = [&good](qsizetype offset) {
        return qFromLittleEndian<quint32>(good.data() + offset);
    };
    const qsizetype places = word(16);
    const qsizetype placeRecords = 36 + places * 12;
    const qsizetype quarters = placeRecords + places * 8;
    const qsizetype divisions = quarters + qsizetype{word(20)} * 4;

    const std::vector<std::pair<const char*, QByteArray>> damaged{
        {"empty", {}},
        {"header only", good.left(36)},
        {"half a header", good.left(20)},
        {"cut", good.left(good.size() / 2)},
        {"last byte gone", good.left(good.size() - 1)},
        {"too long", good + 'x'},
        {"other version", withWord(good, 8, 2, true)},
        {"no leaf", withWord(good, 12, 0, true)},
        {"huge counts", withWord(good, 16, 0xffffffff, true)},
        {"flipped bit in a point", withWord(good, 4000, word(4000) ^ 1, false)},
        {"name out of bounds", withWord(good, placeRecords, 0x7fffffff, true)},
        {"division out of bounds", withWord(good, placeRecords + 4, 0xffff, true)},
        {"quarter out of bounds", withWord(good, placeRecords + 4, 0xffff0000, true)},
        {"city out of bounds", withWord(good, quarters, static_cast<quint32>(places), true)},
        {"division's name out of bounds", withWord(good, divisions, 0xfffffff0, true)},
        {"last name without end", withWord(good, good.size() - 4, 0x41414141, true)},
        {"text", QByteArray("not a gazetteer\n").repeated(1000)}};
    const QTemporaryDir folder;
    for (const auto& [what, bytes] : damaged) {
        const QString path = folder.filePath(QString::fromLatin1(what));
        support::writeFile(path, bytes);
        QString reason;
        EXPECT_EQ(Gazetteer::open(path, &reason), nullptr) << what;
        EXPECT_FALSE(reason.isEmpty()) << what;
    }
    QString reason;
    EXPECT_EQ(Gazetteer::open(folder.filePath(u"missing"_s), &reason), nullptr);
    EXPECT_FALSE(reason.isEmpty());
    EXPECT_EQ(Gazetteer::open(folder.path(), &reason), nullptr);
}

TEST(GazetteerTest, emptyGazetteerAnswersNothing) {
    QByteArray bytes = support::readFile(installedPath()).left(36) + QByteArray(1, '\0');
    for (const qsizetype count : {16, 20, 24})
        qToLittleEndian<quint32>(0, bytes.data() + count);
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(u"empty.bin"_s), withWord(bytes, 28, 1, true));
    QString reason;
    const auto gazetteer = Gazetteer::open(folder.filePath(u"empty.bin"_s), &reason);
    ASSERT_NE(gazetteer, nullptr) << qPrintable(reason);
    EXPECT_FALSE(gazetteer->nearest({0, 0}, 1e9));
}

} // namespace
