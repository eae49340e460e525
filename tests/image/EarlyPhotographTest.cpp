#include "image/large/EarlyPhotograph.h"

#include "image/large/LoadRequests.h"
#include "platform/tasks/MainLoop.h"
#include "support/Support.h"

namespace {

const LargeImageScreen screen{.maxScreenSize = 40, .backingScaleFactor = 1, .colorSpace = {}};

/// 0 where nothing is to be had.
int longerSide(
    EarlyPhotograph& early, const QString& path, const codec::DecodeRequest& request,
    double later = 0) {
    const auto values = platform::FileManager::look(path).values;
    const auto taken = early.take(
        path, static_cast<quint64>(values.fileSize), values.modificationDate + later, request,
        std::stop_token());
    return taken ? taken->frame.image.width() : 0;
}

TEST(EarlyPhotographTest, onePhotographIsReadAndDecodedForWhoeverAsksForTheFileAsItIs) {
    const platform::MainLoop loop;
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.jpg"_s);
    const QString other = folder.filePath(u"b.png"_s);
    for (const QString& each : {path, other})
        support::writePicture(each, {80, 60});
    const auto half = LoadRequests::make(40, {});
    EarlyPhotograph early;
    const auto side = [&](const codec::DecodeRequest& request, double later = 0) {
        return longerSide(early, path, request, later);
    };
    EXPECT_EQ(side(half), 0) << "nothing was begun";
    for (int round = 0; round < 2; ++round) {
        early.begin(path, screen);
        EXPECT_EQ(side(LoadRequests::make(60, {})), 0);
        EXPECT_EQ(side(LoadRequests::make(40, QColorSpace::AdobeRgb)), 0);
        EXPECT_EQ(side(LoadRequests::make(39, {})), 40) << "a rounding apart";
        EXPECT_EQ(side(half), 0) << "once";
        early.forget();
        EXPECT_EQ(side(half), 0);
    }
    early.begin(path, screen);
    EXPECT_EQ(side(half, 1), 0) << "another file by now";
    early.begin(path, {.maxScreenSize = 20, .backingScaleFactor = 1, .colorSpace = {}});
    early.begin(path, screen);
    EXPECT_EQ(side(half), 40) << "the window came up on another screen";
    early.begin(other, screen);
    early.begin(path, screen);
    EXPECT_EQ(side(LoadRequests::make(0, {})), 0) << "reduced";
    early.forget();
    early.begin(path, {.maxScreenSize = 400, .backingScaleFactor = 1, .colorSpace = {}});
    EXPECT_EQ(side(LoadRequests::make(0, {})), 80) << "no larger than that";

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
    EarlyPhotograph early;
    for (const int frames : {1, 2}) {
        const QString path = folder.filePath(u"%1.gif"_s.arg(frames));
        support::writeFile(path, head + frame.repeated(frames) + ';');
        early.begin(path, screen);
        EXPECT_EQ(longerSide(early, path, LoadRequests::make(40, {})), frames == 1 ? 1 : 0);
    }
}

} // namespace
