#include "platform/UserDefaults.h"

#include "support/Support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using platform::UserDefaults;

namespace {

class UserDefaultsTest : public testing::Test {
protected:
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("Velmora.conf"));
    const QString key = QStringLiteral("Key");

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
        defaults.setBool(false, QStringLiteral("Bool"));
        defaults.setInteger(-9007199254740993, QStringLiteral("Integer"));
        defaults.setDouble(0.1, QStringLiteral("Double"));
        defaults.setString(text, QStringLiteral("String"));
        defaults.setString(QString(), QStringLiteral("Empty"));
        defaults.setData(bytes, QStringLiteral("Data"));
        defaults.setIntegers({3}, QStringLiteral("One"));
        defaults.setIntegers({}, QStringLiteral("None"));
        defaults.setIntegerArrays(chains, QStringLiteral("Chains"));
        defaults.setInteger(1, QStringLiteral("Gone"));
        defaults.removeKey(QStringLiteral("Gone"));
    }
    const UserDefaults defaults(file);
    EXPECT_EQ(defaults.boolForKey(QStringLiteral("Bool")), false);
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("Integer")), -9007199254740993);
    EXPECT_EQ(defaults.doubleForKey(QStringLiteral("Double")), 0.1);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("String")), text);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("Empty")), QString());
    EXPECT_EQ(defaults.dataForKey(QStringLiteral("Data")), bytes);
    EXPECT_EQ(defaults.integersForKey(QStringLiteral("One")), UserDefaults::IntegerArray{3});
    EXPECT_EQ(defaults.integersForKey(QStringLiteral("None")), UserDefaults::IntegerArray{});
    EXPECT_EQ(defaults.integerArraysForKey(QStringLiteral("Chains")), chains);
    EXPECT_FALSE(defaults.hasKey(QStringLiteral("Gone")));
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("Gone")), std::nullopt);
}

TEST_F(UserDefaultsTest, handWrittenListsAndTruthValuesAreRead) {
    support::writeFile(file, "GroupTypeArray=3, 5\nRecurseSubFolder=1\n");
    const UserDefaults defaults(file);
    EXPECT_EQ(
        defaults.integersForKey(QStringLiteral("GroupTypeArray")),
        (UserDefaults::IntegerArray{3, 5}));
    EXPECT_EQ(defaults.boolForKey(QStringLiteral("RecurseSubFolder")), true);
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
    const QByteArray bytes("SortType=soon\nFilter=1.5\nGroupTypeArray=3,x\nSplit=nan\nData=%%\n");
    support::writeFile(file, bytes);
    const std::string told = complaints([&] {
        UserDefaults defaults(file);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(defaults.integerForKey(QStringLiteral("SortType")), std::nullopt);
            EXPECT_EQ(defaults.integerForKey(QStringLiteral("Filter")), std::nullopt);
            EXPECT_EQ(defaults.integersForKey(QStringLiteral("GroupTypeArray")), std::nullopt);
            EXPECT_EQ(defaults.doubleForKey(QStringLiteral("Split")), std::nullopt);
            EXPECT_EQ(defaults.boolForKey(QStringLiteral("SortType")), std::nullopt);
            EXPECT_EQ(defaults.dataForKey(QStringLiteral("Data")), std::nullopt);
        }
        EXPECT_TRUE(defaults.isPersistent());
        defaults.setInteger(2, key);
    });
    EXPECT_EQ(std::ranges::count(told, '\n'), 5) << told;
    const UserDefaults again(file);
    EXPECT_EQ(again.stringForKey(QStringLiteral("SortType")), QStringLiteral("soon"));
    EXPECT_EQ(again.integerForKey(key), 2);
}

TEST_F(UserDefaultsTest, unwritableFolderIsToldOnceAndChangesStayInMemory) {
    // A file where a folder should be keeps even the superuser out.
    support::writeFile(folder.filePath(QStringLiteral("plain")), "x");
    const std::string told = complaints([&] {
        UserDefaults defaults(folder.filePath(QStringLiteral("plain/Velmora.conf")));
        defaults.setInteger(1, key);
        defaults.setInteger(2, key);
        EXPECT_EQ(defaults.integerForKey(key), 2);
        EXPECT_FALSE(defaults.isPersistent());
    });
    EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
}

} // namespace
