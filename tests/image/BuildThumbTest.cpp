#include "image/MissingThumbsOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "codec/PBImageImporterManager.h"
#include "image/BuildThumbNotifier.h"
#include "image/BuiltThumbnails.h"
#include "image/ThumbnailStore.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/OperationQueue.h"
#include "support/FakeFiles.h"

#include <numeric>

using platform::OperationQueue;
using platform::QueuePriority;
using support::FakeFile;
using support::FakeFiles;

namespace {

using Time = std::chrono::steady_clock::time_point;

struct BuildThumbTest : testing::Test {
    BuildThumbTest() {
        EXPECT_TRUE(db.open());
        EXPECT_TRUE(PBCatalogue(db).checkTables_Thumbnail());
        services = std::shared_ptr<BuildThumbServices>(new BuildThumbServices{
            .db = db, .queue = queue, .unstored = unstored, .didBuild = [this](const auto& built) {
                order.push_back(built->fileId());
            }});
    }

    static std::unique_ptr<support::FakeImporter>
    importerOf(const QString& name, const FakeFile& file, FakeFiles& all) {
        all.set(name, file);
        return std::make_unique<support::FakeImporter>(
            std::bind_front(&FakeFiles::read, &all, name));
    }
    std::shared_ptr<PBBuildThumbOperation>
    add(qint64 fileId, const FakeFile& file = {{9, 9}}, QSizeF known = {}, bool checkExist = false,
        FakeFiles* gate = nullptr) {
        auto operation = std::make_shared<PBBuildThumbOperation>(
            services,
            PBBuildThumbOperation::Request{
                .fileId = fileId,
                .imageImporter = importerOf(QString::number(fileId), file, gate ? *gate : files),
                .checkExist = checkExist,
                .thumbSize = 256,
                .imageSize = known});
        queue.addOperation(operation);
        return operation;
    }
    void build(
        qint64 fileId, const FakeFile& file = {{9, 9}}, QSizeF known = {},
        bool checkExist = false) {
        add(fileId, file, known, checkExist);
        queue.waitUntilAllOperationsAreFinished();
    }
    /// How many were built, have failed and have ended.
    QList<int> figures() const {
        return {int(services->built), int(services->failed), int(services->finished)};
    }

    FMDatabase db{QString()};
    FakeFiles files;
    FakeFiles stuck;           // the gate of those that take long
    std::vector<qint64> order; // written on the build queue's thread
    std::shared_ptr<BuildThumbServices> services;
    BuiltThumbnails unstored;
    OperationQueue queue{QStringLiteral("build")};
};

} // namespace

TEST_F(BuildThumbTest, SizeAndEncodingFollowFromThePicture) {
    // The picture; its size as far as it is known; what is asked for; the thumbnail.
    const std::tuple<QSize, QSizeF, int, QSize> cases[] = {
        {{200, 100}, {200, 100}, 0, {200, 100}},  {{256, 256}, {256, 256}, 0, {256, 256}},
        {{300, 100}, {300, 100}, 256, {256, 85}}, {{100, 300}, {100, 300}, 256, {85, 256}},
        {{257, 9}, {257, 9}, 256, {256, 8}},      {{512, 512}, {}, 256, {256, 256}}};
    qint64 id = 0;
    for (const auto& [size, known, asked, thumbnail] : cases) {
        for (const auto format : {QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied}) {
            build(++id, {.size = size, .color = Qt::transparent, .format = format}, known);
            EXPECT_EQ(files.asked(), QStringList(u"%1@%2"_s.arg(id).arg(asked)));
            EXPECT_EQ(ThumbnailStore::loadThumbnail(db, id, true, {}).size(), thumbnail);
            const bool isPng = ThumbnailStore::thumbnailData(db, id).startsWith("\x89PNG");
            EXPECT_EQ(isPng, format != QImage::Format_RGB32);
        }
    }
    EXPECT_EQ(figures(), (QList{12, 0, 12}));
}

TEST_F(BuildThumbTest, AThumbnailThatIsThereStays) {
    build(1);
    const QByteArray first = ThumbnailStore::thumbnailData(db, 1);
    build(1, {{20, 20}}, {}, true);
    EXPECT_EQ(files.asked().size(), 1) << "not even decoded";
    build(2, {{20, 20}}, {}, true);
    EXPECT_EQ(order, (std::vector<qint64>{1, 2}));
    build(1, {{20, 20}});
    EXPECT_EQ(order.size(), 3U) << "told all the same";
    EXPECT_EQ(ThumbnailStore::thumbnailData(db, 1), first);
    EXPECT_EQ(figures(), (QList{2, 0, 4}));
}

TEST_F(BuildThumbTest, OfImagesThatAreKnownOnlyThoseWithoutAThumbnailAreBuiltInTheirPlace) {
    QStringList opened;
    PBImageImporterManager importers({PBImageImporterClass{
        .typeIdentifiers = [] { return QStringList{u"public.jpeg"_s}; },
        .initWithImagePath =
            [&](const QString& path) {
                opened.append(path);
                return importerOf(path, {{300, 100}}, files);
            },
        .propertiesOfImages = {}}});
    build(2);
    queue.setSuspended(true);
    const auto known = std::make_shared<MissingThumbsOperation>(services, importers, 128);
    for (qint64 id = 1; id <= 64; ++id)
        known->add(id, {u"/pictures"_s, u"%1.jpg"_s.arg(id), {300, 100}});
    const auto all = static_cast<qint64>(known->keys().size());
    known->add(all + 1, {u"/pictures"_s, u"notes.txt"_s, {}});
    for (qint64 id = 4; id <= all; ++id)
        ASSERT_TRUE(PBCatalogue(db).insertThumbnailWithFileId(id, "there already"));
    queue.addOperation(known);
    add(1000);
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(order, (std::vector<qint64>{2, 1, 3, 1000}));
    EXPECT_EQ(opened, QStringList({u"/pictures/1.jpg"_s, u"/pictures/3.jpg"_s}));
    EXPECT_EQ(ThumbnailStore::loadThumbnail(db, 3, true, {}).size(), QSize(128, 42));
    EXPECT_EQ(figures(), (QList{4, 0, 2 + static_cast<int>(all) + 1}));
}

TEST_F(BuildThumbTest, WhatCannotBeDecodedOrWasCancelledLeavesNothing) {
    build(1, {.status = codec::ReadStatus::Refused});
    files.setOpen(false);
    add(2);
    add(3);
    files.waitUntilReading();
    queue.cancelAllOperations(); // ends the decoding, though its gate is shut
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(figures(), (QList{0, 1, 2}));
}

TEST_F(BuildThumbTest, ThumbnailsThatCannotBeStoredHaveFailedAndAreToldOnce) {
    testing::internal::CaptureStderr();
    build(1);
    ASSERT_TRUE(db.executeUpdate(u"pragma query_only = on"_s));
    build(2);
    build(3);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
    EXPECT_EQ(figures(), (QList{1, 2, 3}));
    EXPECT_EQ(order, (std::vector<qint64>{1, 2, 3})) << "shown all the same";
}

TEST_F(BuildThumbTest, StoredThumbnailsComeInTheColoursOfTheScreen) {
    build(1, {{8, 8}, QColor(200, 60, 60)});
    const QColorSpace wide(QColorSpace::AdobeRgb);
    const auto red = [&](bool preload, const QColorSpace& space) {
        return ThumbnailStore::loadThumbnail(db, 1, preload, space).pixelColor(4, 4).red();
    };
    EXPECT_NEAR(red(false, wide), 200, 3);
    EXPECT_NEAR(red(true, {}), 200, 3);
    EXPECT_LT(red(true, wide), 185) << "the same red in a wider space";
    ASSERT_TRUE(db.executeUpdate(u"update Thumbnail set Data = 'damaged'"_s));
    EXPECT_TRUE(ThumbnailStore::loadThumbnail(db, 1, true, wide).isNull());
}

TEST_F(BuildThumbTest, IdleCoresDecodeAheadTheOrderStaysAndCancellingGivesTheirPlacesBack) {
    constexpr int cores = 3;
    EXPECT_EQ(DecodeAhead(1).capacity(), 0);
    DecodeAhead ahead(cores);
    services->ahead = &ahead;
    queue.setSuspended(true);
    for (qint64 id = 1; id <= 30; ++id)
        add(id, {{400, 300}}, {}, id % 2 == 0);
    ASSERT_TRUE(PBCatalogue(db).insertThumbnailWithFileId(20, "there already"));
    add(0)->setQueuePriority(QueuePriority::VeryHigh);
    files.setOpen(false);
    queue.setSuspended(false);
    // The build queue's own and one for each core, since it will wait for others most of the time.
    files.waitUntilReading(cores + 1);
    EXPECT_FALSE(ahead.takePlace());
    files.setOpen(true);
    queue.waitUntilAllOperationsAreFinished();
    std::vector<qint64> expected(31);
    std::iota(expected.begin(), expected.end(), 0);
    std::erase(expected, 20);
    EXPECT_EQ(order, expected);
    EXPECT_EQ(files.mostAtATime(), cores + 1);
    EXPECT_EQ(files.asked().size(), 30);

    files.setOpen(false);
    queue.setSuspended(true);
    for (qint64 id = 31; id <= 50; ++id)
        add(id);
    queue.setSuspended(false);
    files.waitUntilReading(cores + 1);
    queue.cancelAllOperations();
    queue.waitUntilAllOperationsAreFinished();
    // All places come back, when the decodings that were cut off have ended.
    std::vector<DecodeAhead::Place> left;
    EXPECT_TRUE(support::spinUntil([&] {
        while (auto place = ahead.takePlace())
            left.push_back(std::move(place));
        return left.size() == static_cast<std::size_t>(ahead.capacity());
    }));
    EXPECT_EQ(order, expected);
    services->ahead = nullptr;
}

TEST_F(BuildThumbTest, WhatWaitsToBeStoredWaitsForNothingThatTakesLong) {
    const auto isBuilt = [&](quint64 count) {
        return support::spinUntil([&] { return services->built == count; });
    };
    const auto holdUp = [&](qint64 fileId) { add(fileId, {}, {}, false, &stuck); };
    DecodeAhead cores(2);
    for (DecodeAhead* ahead : {static_cast<DecodeAhead*>(nullptr), &cores}) {
        services->ahead = ahead;
        const quint64 before = services->built;
        const auto id = static_cast<qint64>(before);
        files.setOpen(false);
        stuck.setOpen(false);
        queue.setSuspended(true);
        add(id + 1);
        holdUp(id + 2);
        queue.setSuspended(false);
        if (ahead) stuck.waitUntilReading();
        files.setOpen(true);
        EXPECT_TRUE(isBuilt(before + 1)) << "a decoding of another";
        queue.setSuspended(true);
        add(id + 3);
        stuck.setOpen(true);
        EXPECT_TRUE(isBuilt(before + 2)) << "a queue that is held";
        queue.addOperation(
            std::make_shared<PBRemoveThumbOperation>(std::vector{id + 1, id + 3}, db));
        queue.setSuspended(false);
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_EQ(services->built, before + 3);
        EXPECT_FALSE(ThumbnailStore::isThumbnailExist(db, id + 3)) << "its removal";
    }
    services->ahead = nullptr;
}

TEST_F(BuildThumbTest, ThumbnailsThatAreStoredTogetherAreCountedAndToldEachForItself) {
    queue.setSuspended(true);
    std::vector<std::shared_ptr<PBBuildThumbOperation>> operations;
    for (qint64 id = 1; id <= 32; ++id)
        operations.push_back(add(id));
    ASSERT_TRUE(PBCatalogue(db).insertThumbnailWithFileId(2, "there already"));
    operations[2]->cancel();
    Time now;
    BuiltThumbnails some([&] { return now; });
    for (const auto& operation : operations) {
        some.add({operation, "data"});
        EXPECT_EQ(some.patience().count() > 0, operation != operations.back());
    }
    some.store(*services);
    EXPECT_EQ(figures(), (QList{31, 0, 0}));
    EXPECT_EQ(order.size(), 31U);
    EXPECT_EQ(ThumbnailStore::thumbnailData(db, 2), "there already");
    EXPECT_EQ(ThumbnailStore::thumbnailData(db, 3), "data") << "was made for nothing, and is there";
    EXPECT_TRUE(some.isEmpty());
    some.add({operations.front(), "data"});
    now += std::chrono::milliseconds(51);
    EXPECT_LE(some.patience().count(), 0);
}

TEST_F(BuildThumbTest, MorePicturesAreDecodedAheadWhereThatIsQuick) {
    using namespace std::chrono_literals;
    std::atomic<Time> now;
    std::atomic<std::chrono::milliseconds> step{1ms};
    DecodeAhead ahead(2, [&] { return now = now.load() + step.load(); });
    const auto becomes = [&](int capacity) {
        ahead.run([] {});
        return support::spinUntil([&] { return ahead.capacity() == capacity; });
    };
    EXPECT_EQ(ahead.capacity(), 4);
    EXPECT_TRUE(becomes(12));
    step = 50ms; // (7 * 1 + 50) / 8 = 7.1
    EXPECT_TRUE(becomes(5));
    step = 500ms;
    EXPECT_TRUE(becomes(4));
}

TEST_F(BuildThumbTest, EndedThumbnailsAreToldOnTheMainThread) {
    platform::MainLoop loop;
    auto notifier = std::make_unique<BuildThumbNotifier>();
    services->didBuild = notifier->poster();
    std::set<qint64> told;
    QObject::connect(
        notifier.get(), &BuildThumbNotifier::PBNotiName_BuildThumb, notifier.get(),
        [&](const PBBuildThumbOperation& operation) { told.insert(operation.fileId()); });
    {
        const platform::TrackingScope dragging; // holds up what can wait
        add(1);
        add(2);
        ASSERT_TRUE(support::spinUntil([&] { return told.size() == 2; }));
    }
    build(3);
    notifier.reset();
    bool posted = false;
    loop.post(platform::MainLoop::Mode::Common, [&] { posted = true; });
    ASSERT_TRUE(support::spinUntil([&] { return posted; }));
    EXPECT_EQ(told.size(), 2U);
}
