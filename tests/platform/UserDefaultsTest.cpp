#include "platform/UserDefaults.h"

#include "support/Support.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using platform::UserDefaults;

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
};

TEST_F(UserDefaultsTest, everyTypeSurvivesARestart) {
    const QString text = QString::fromUtf8("=; [x] \"quoted\", \\n \n ümlaut 😀 @Invalid()");
    const QByteArray bytes("\0\xff\n", 3);
    const std::vector<UserDefaults::IntegerArray> chains{{3, 5}, {16}, {}};
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
        defaults.setInteger(1, u"Gone"_s);
        defaults.removeKey(u"Gone"_s);
    }
    const UserDefaults defaults(file);
    EXPECT_EQ(defaults.boolForKey(u"Bool"_s), false);
    EXPECT_EQ(defaults.integerForKey(u"Integer"_s), -9007199254740993);
    EXPECT_EQ(defaults.doubleForKey(u"Double"_s), 0.1);
    EXPECT_EQ(defaults.stringForKey(u"String"_s), text);
    EXPECT_EQ(defaults.stringForKey(u"Empty"_s), QString());
    EXPECT_EQ(defaults.dataForKey(u"Data"_s), bytes);
    EXPECT_EQ(defaults.integersForKey(u"One"_s), UserDefaults::IntegerArray{3});
    EXPECT_EQ(defaults.integersForKey(u"None"_s), UserDefaults::IntegerArray{});
    EXPECT_EQ(defaults.integerArraysForKey(u"Chains"_s), chains);
    EXPECT_FALSE(defaults.hasKey(u"Gone"_s));
    EXPECT_EQ(defaults.integerForKey(u"Gone"_s), std::nullopt);
}

TEST_F(UserDefaultsTest, valueIsOnDiskWhenTheProcessIsKilledRightAfterTheSet) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        UserDefaults defaults(file);
        defaults.setInteger(42, key);
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(UserDefaults(file).integerForKey(key), 42);
}

TEST_F(UserDefaultsTest, damagedFileIsLeftAloneAndChangesStayInMemory) {
    const QByteArray rubbish[] = {
        QByteArray("\x89PNG\r\n\x1a\n\0\0=", 11), QByteArray("[General]\nSortType 3\n"),
        QByteArray("Key=\xff\xfe\n"), QByteArray(5'000'000, '=')};
    for (const QByteArray& bytes : rubbish) {
        support::writeFile(file, bytes);
        const std::string told = complaints([&] {
            UserDefaults defaults(file);
            EXPECT_FALSE(defaults.isPersistent());
            EXPECT_EQ(defaults.integerForKey(key), std::nullopt);
            defaults.setInteger(7, key);
            EXPECT_EQ(defaults.integerForKey(key), 7);
        });
        EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
        EXPECT_EQ(support::readFile(file), bytes);
    }
}

TEST_F(UserDefaultsTest, settingOfTheWrongTypeCountsAsAbsentIsToldOnceAndStays) {
    const QByteArray bytes(
        "Hand=3, 5\nSortType=soon\nFilter=1.5\nGroupTypeArray=3,x\nSplit=nan\nData=%%\n");
    support::writeFile(file, bytes);
    const std::string told = complaints([&] {
        UserDefaults defaults(file);
        EXPECT_EQ(defaults.integersForKey(u"Hand"_s), (UserDefaults::IntegerArray{3, 5}))
            << "by hand";
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(defaults.integerForKey(u"SortType"_s), std::nullopt);
            EXPECT_EQ(defaults.integerForKey(u"Filter"_s), std::nullopt);
            EXPECT_EQ(defaults.integersForKey(u"GroupTypeArray"_s), std::nullopt);
            EXPECT_EQ(defaults.doubleForKey(u"Split"_s), std::nullopt);
            EXPECT_EQ(defaults.boolForKey(u"SortType"_s), std::nullopt);
            EXPECT_EQ(defaults.dataForKey(u"Data"_s), std::nullopt);
        }
        EXPECT_TRUE(defaults.isPersistent());
        defaults.setInteger(2, key);
    });
    EXPECT_EQ(std::ranges::count(told, '\n'), 5) << told;
    const UserDefaults again(file);
    EXPECT_EQ(again.stringForKey(u"SortType"_s), u"soon"_s);
    EXPECT_EQ(again.integerForKey(key), 2);
}

TEST_F(UserDefaultsTest, unwritableFolderIsToldOnceAndChangesStayInMemory) {
    // A file where a folder should be keeps even the superuser out.
    support::writeFile(folder.filePath(u"plain"_s), "x");
    const std::string told = complaints([&] {
        UserDefaults defaults(folder.filePath(u"plain/Velmora.conf"_s));
        defaults.setInteger(1, key);
        defaults.setInteger(2, key);
        EXPECT_EQ(defaults.integerForKey(key), 2);
        EXPECT_FALSE(defaults.isPersistent());
    });
    EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
}

} // namespace
