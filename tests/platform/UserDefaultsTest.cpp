#include "platform/program/UserDefaults.h"

#include "support/Support.h"

using platform::UserDefaults;
using Arrays = std::vector<UserDefaults::IntegerArray>;

namespace {

struct UserDefaultsTest : testing::Test {
    QTemporaryDir folder;
    const QString file = folder.filePath(u"Velmora.conf"_s);
    const QString key = u"Key"_s;

    /// What is written on standard error while the function runs.
    static std::string complaints(const std::function<void()>& function) {
        testing::internal::CaptureStderr();
        function();
        return testing::internal::GetCapturedStderr();
    }
    /// Changes last until the end only, and one line tells why.
    void expectKeptInMemory(const QString& at) const {
        const std::string told = complaints([&] {
            UserDefaults defaults(at);
            EXPECT_EQ(defaults.integerForKey(key), std::nullopt);
            for (const int value : {1, 7})
                defaults.setInteger(value, key);
            EXPECT_EQ(defaults.integerForKey(key), 7);
        });
        EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
    }
};

TEST_F(UserDefaultsTest, everyTypeSurvivesARestart) {
    const QString text = QString::fromUtf8("=; [x] \"quoted\", \\n \n ümlaut 😀 @Invalid()");
    const QByteArray bytes("\0\xff\n", 3);
    const Arrays chains{{3, 5}, {16}, {}};
    {
        UserDefaults defaults(file);
        defaults.setBool(false, u"Bool"_s);
        defaults.setInteger(-9007199254740993, u"Integer"_s);
        defaults.setDouble(0.1, u"Double"_s);
        defaults.setString(text, u"String"_s);
        defaults.setString(QString(), u"Empty"_s);
        defaults.setData(bytes, u"Data"_s);
        defaults.setIntegers({3}, u"One"_s);
        defaults.setIntegers({}, u"None"_s);
        defaults.setIntegerArrays(chains, u"Chains"_s);
    }
    const UserDefaults defaults(file);
    EXPECT_EQ(defaults.boolForKey(u"Bool"_s), false);
    EXPECT_EQ(defaults.integerForKey(u"Integer"_s), -9007199254740993);
    EXPECT_EQ(defaults.doubleForKey(u"Double"_s), 0.1);
    EXPECT_EQ(defaults.stringForKey(u"String"_s), text);
    EXPECT_EQ(defaults.stringForKey(u"Empty"_s), QString());
    EXPECT_EQ(defaults.dataForKey(u"Data"_s), bytes);
    EXPECT_EQ(defaults.integersForKey(u"One"_s), std::vector{3});
    EXPECT_EQ(defaults.integersForKey(u"None"_s), std::vector<int>());
    EXPECT_EQ(defaults.integerArraysForKey(u"Chains"_s), chains);
    EXPECT_FALSE(defaults.hasKey(key));
}

TEST_F(UserDefaultsTest, fileThatIsDamagedOrCantBeMadeIsLeftAloneAndChangesStayInMemory) {
    for (const QByteArray& bytes :
         {QByteArray("\x89PNG\r\n\x1a\n\0\0=", 11), QByteArray("[General]\nSortType 3\n"),
          QByteArray("Key=\xff\xfe\n"), QByteArray("[General\nKey=1\n"), QByteArray("Key=a\x01\n"),
          QByteArray(4 * 1024 * 1024 + 1, '=')}) {
        support::writeFile(file, bytes);
        expectKeptInMemory(file);
        EXPECT_EQ(support::readFile(file), bytes);
    }
    // A file where a folder should be keeps even the superuser out.
    expectKeptInMemory(file + u"/Velmora.conf"_s);
}

TEST_F(UserDefaultsTest, handWrittenFileIsReadUpToItsLargestSize) {
    const QByteArray head = "; mine\n# too\n\n[General]\nOn=1\nOff=0\nChains=\"3,5;-; 3\"\nKey=";
    support::writeFile(file, head + QByteArray(4 * 1024 * 1024 - head.size(), 'x'));
    UserDefaults defaults(file);
    EXPECT_EQ(
        std::pair(defaults.boolForKey(u"On"_s), defaults.boolForKey(u"Off"_s)),
        std::pair(std::optional(true), std::optional(false)));
    EXPECT_EQ(defaults.integerArraysForKey(u"Chains"_s), (Arrays{{3, 5}, {}, {3}}));
    EXPECT_TRUE(defaults.hasKey(key));
    // What stands already is not written again.
    EXPECT_TRUE(QFile::remove(file));
    for (const int value : {1, 2}) {
        defaults.setInteger(value, u"On"_s);
        EXPECT_EQ(QFile::exists(file), value == 2);
    }
}

TEST_F(UserDefaultsTest, settingOfTheWrongTypeCountsAsAbsentIsToldOnceAndStays) {
    support::writeFile(file, "Hand=3, 5\nSort=soon\nHalf=1.5\nList=3,x\nNaN=nan\nData=%%\n");
    const std::string told = complaints([&] {
        UserDefaults defaults(file);
        EXPECT_EQ(defaults.integersForKey(u"Hand"_s), (Arrays::value_type{3, 5}));
        for (int i = 0; i < 2; ++i) {
            EXPECT_FALSE(defaults.integerForKey(u"Sort"_s) || defaults.boolForKey(u"Sort"_s));
            EXPECT_FALSE(defaults.integerForKey(u"Half"_s) || defaults.doubleForKey(u"NaN"_s));
            EXPECT_FALSE(defaults.integersForKey(u"List"_s) || defaults.dataForKey(u"Data"_s));
        }
        defaults.setInteger(2, key);
    });
    EXPECT_EQ(std::ranges::count(told, '\n'), 5) << told;
    EXPECT_EQ(UserDefaults(file).stringForKey(u"Sort"_s), u"soon"_s);
    EXPECT_EQ(UserDefaults(file).integerForKey(key), 2);
}

} // namespace
