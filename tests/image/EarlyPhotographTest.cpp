#include "image/large/EarlyPhotograph.h"

#include "image/large/LoadRequests.h"
#include "platform/tasks/MainLoop.h"
#include "support/Support.h"

namespace {

TEST(EarlyPhotographTest, onePhotographIsReadAndDecodedForWhoeverAsksForTheFileAsItIs) {
    const platform::MainLoop loop;
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.jpg"_s);
    const QString other = folder.filePath(u"b.png"_s);
    for (const QString& each : {path, other})
        support::writePicture(each, {80, 60});
    const auto values = platform::FileManager::look(path).values;
    const LargeImageScreen screen{.maxScreenSize = 40, .backingScaleFactor = 1, .colorSpace = {}};
    const auto half = LoadRequests::make(40, {});
    EarlyPhotograph early;
    const auto longerSide = [&](const codec::DecodeRequest& request, double date) {
        const auto taken = early.take(
            path, static_cast<quint64>(values.fileSize), date, request, std::stop_token());
        return taken ? taken->frame.image.width() : 0;
    };
    const double date = values.modificationDate;
    EXPECT_EQ(longerSide(half, date), 0) << "nothing was begun";
    for (int round = 0; round < 2; ++round) {
        early.begin(path, screen);
        EXPECT_EQ(longerSide(LoadRequests::make(60, {}), date), 0);
        EXPECT_EQ(longerSide(LoadRequests::make(40, QColorSpace::AdobeRgb), date), 0);
        EXPECT_EQ(longerSide(LoadRequests::make(39, {}), date), 40) << "a rounding apart";
        EXPECT_EQ(longerSide(half, date), 0) << "once";
        early.forget();
        EXPECT_EQ(longerSide(half, date), 0);
    }
    early.begin(path, screen);
    EXPECT_EQ(longerSide(half, date + 1), 0) << "another file by now";
    early.begin(path, {.maxScreenSize = 20, .backingScaleFactor = 1, .colorSpace = {}});
    early.begin(path, screen);
    EXPECT_EQ(longerSide(half, date), 40) << "the window came up on another screen";
    early.begin(other, screen);
    early.begin(path, screen);
    EXPECT_EQ(longerSide(LoadRequests::make(0, {}), date), 0) << "reduced";
    early.forget();
    early.begin(path, {.maxScreenSize = 400, .backingScaleFactor = 1, .colorSpace = {}});
    EXPECT_EQ(longerSide(LoadRequests::make(0, {}), date), 80) << "no larger than that";

    std::optional<EarlyPhotograph::Seen> seen;
    early.begin(other, screen);
    early.observe(path, [](const auto&) { ADD_FAILURE() << "not begun any more"; });
    early.observe(other, [&](const EarlyPhotograph::Seen& told) { seen = told; });
    EXPECT_TRUE(support::spinUntil([&] { return seen.has_value(); }));
    EXPECT_EQ(seen->imageSize, QSizeF(80, 60));
    EXPECT_EQ(seen->values.fileSize, QFileInfo(other).size());
}

TEST(EarlyPhotographTest, ofFilesThatMayPlayThoseThatDoAreLeftToThePlayer) {
    const QTemporaryDir folder;
    const QByteArray head("GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff", 19);
    const QByteArray frame("!\xf9\4\0\5\0\0\0,\0\0\0\0\1\0\1\0\0\2\2\x44\1\0", 23);
    const LargeImageScreen screen{.maxScreenSize = 40, .backingScaleFactor = 1, .colorSpace = {}};
    EarlyPhotograph early;
    for (const int frames : {1, 2}) {
        const QString path = folder.filePath(u"%1.gif"_s.arg(frames));
        support::writeFile(path, head + frame.repeated(frames) + ';');
        const auto values = platform::FileManager::look(path).values;
        early.begin(path, screen);
        const auto taken = early.take(
            path, static_cast<quint64>(values.fileSize), values.modificationDate,
            LoadRequests::make(40, {}), std::stop_token());
        EXPECT_EQ(taken.has_value(), frames == 1) << frames;
    }
}

} // namespace
