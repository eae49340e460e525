#include "scan/FilePropertyBatch.h"
#include "scan/PBUpdateFileItemOperation.h"
#include "scan/ScanSupport.h"

namespace {

using support::words;

struct Work final : PBScanAttachOperation {
    using Function = std::function<void(platform::Operation& owner, bool isLast)>;

    explicit Work(Function function) : _function(std::move(function)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override {
        _function(owner, isLast);
    }

private:
    const Function _function;
};

struct AttachTest : ScanTest {
    /// The item has other marks, and so has its row.
    void edit(const char16_t* name) {
        PBUpdateFileItemOperation::Edited edited;
        for (const auto& item : items())
            if (item->fileName() == name) edited.items.push_back(item);
        edited.fileIds = {edited.items.at(0)->fileId()};
        factory->attach(std::make_shared<PBUpdateFileItemOperation>(dictionary(), edited));
    }
    PBScanDictionaryRef dictionary() const {
        return factory->makeDictionary(root, {}, workTree, browsing);
    }
    /// A look into the folder, as at what a watcher saw.
    std::shared_ptr<PBScanAttachOperation> rescan(const QString& relativePath = {}) const {
        const auto looking = factory->makeDictionary(root, relativePath, workTree, browsing);
        looking->ImageFilePropertyArray = std::make_shared<std::vector<FileProperty>>();
        looking->IsAttached = true;
        return std::make_shared<PBScanFolderAttachOperation>(looking);
    }
    void groupBy(int type) {
        browsing.groupTypeArray = std::make_shared<const std::vector<int>>(1, type);
    }
};

} // namespace

TEST_F(AttachTest, AttachedWorkRunsInOrderWithinAScanOrWithoutAndIsLostWithACancelledOwner) {
    QStringList notes;
    const auto note = [&](const QString& name) {
        return std::make_shared<Work>(
            [&notes, name](auto&, bool isLast) { notes += isLast ? name + u" last"_s : name; });
    };
    factory->attach(note(u"alone"_s));
    waitForQueues();
    makePicture(u"a.jpg"_s);
    const auto mailbox = dictionary()->AttachOperationArray;
    importers.willRead = [&](const QString&) {
        for (const QString& name : words("1 2 3"))
            mailbox->add(note(name));
    };
    scan();
    EXPECT_EQ(shown(), words("a.jpg"));
    mailbox->add(std::make_shared<Work>([](auto& owner, bool) { owner.cancel(); }));
    for (const QString& name : words("lost next")) {
        factory->attach(note(name));
        waitForQueues();
    }
    EXPECT_EQ(notes.join(u','), u"alone last,1,2,3 last,next last"_s);
}

TEST_F(AttachTest, EditsMoveItemsAndABurstOfThemIsPublishedOnce) {
    makePictures("a.jpg b.jpg c.jpg");
    scan();
    execute(u"update ImageFile set FileFlag = 1"_s);
    browsing.filter = group::FilterFlagged;
    scan();
    const std::size_t before = publishedCounts().size();
    scanQueue.setSuspended(true);
    for (const auto& item : items())
        if (item->fileName() != u"b.jpg") item->setFlagged(false);
    edit(u"a.jpg");
    edit(u"b.jpg");
    edit(u"c.jpg");
    waitForQueues();
    EXPECT_EQ(shown(), words("b.jpg"));
    EXPECT_EQ(publishedCounts().size(), before + 1);
    EXPECT_TRUE(lastPublication()->updateScrollCapture) << "the browser stays at its place";

    // In one drain with a look at the disk, which finds nothing to show.
    for (const bool isCheck : {false, true}) {
        SCOPED_TRACE(isCheck);
        scan();
        std::shared_ptr<PBScanAttachOperation> looking = rescan();
        if (isCheck) {
            looking = std::make_shared<PBCheckFileItemExistAttachOperation>(
                dictionary(), QStringList(path(u"none.jpg"_s)), true);
        }
        int dropped = 0;
        const auto last = lastPublication();
        const std::shared_ptr<const PBGroupItem> leaf(last, last->groupItemArray.front().get());
        const std::vector<PBGroupItemChain> chains(1, {leaf});
        scanQueue.setSuspended(true);
        factory->attach(std::make_shared<PBRemoveFileItemOperation>(dictionary(), chains));
        attachScanOperation(
            dictionary()->AttachOperationArray, scanQueue, looking, [&] { ++dropped; });
        waitForQueues();
        EXPECT_EQ(dropped, 0) << "nothing comes in the place of what waits";
        EXPECT_TRUE(workTree->empty()) << "an emptied group goes";
        EXPECT_EQ(shown(), QStringList());
    }
}

/// One place in the north, found from some moment on.
struct FoundPlace final : group::PlaceAddresses {
    PBValue addressDictionaryWithLocation(const PBLocation& location) override {
        const bool isKnown = isFound && location.latitude > 0;
        return isKnown ? PBValue(PBDictionary{{u"City"_s, u"Alta"_s}}) : PBValue();
    }
    void addLocationToReverseGeocoding(const PBLocation&) override {}
    std::atomic<bool> isFound{false};
};

TEST_F(AttachTest, APlaceThatIsFoundTakesItsPhotographsFromTheUnknownOnesOnce) {
    FoundPlace places;
    changeServices([&](ScanServices& changed) { changed.places = &places; });
    makePictures("a.jpg b.jpg c.jpg");
    scan();
    execute(u"insert into GPS (FileId,LatitudeRef,Latitude,LongitudeRef,Longitude) select "
            "Id,iif(FileName='c.jpg','S','N'),70,'E',23 from ImageFile"_s);
    groupBy(group::Place);
    scan();
    ASSERT_EQ(workTree->size(), 1U);
    const auto unknown = workTree->front()->data();
    places.isFound = true;
    // Two edits of one photograph before one swap, and it is there once.
    scanQueue.setSuspended(true);
    edit(u"a.jpg");
    edit(u"a.jpg");
    factory->attach(std::make_shared<PBRegroupPlacesOperation>(dictionary()));
    waitForQueues();
    EXPECT_EQ(shown(), words("a.jpg b.jpg c.jpg"));
    ASSERT_EQ(workTree->size(), 2U);
    EXPECT_EQ(workTree->back()->data(), unknown) << "a group that stays is the same one";
    execute(u"update GPS set LatitudeRef='N'"_s);
    factory->attach(std::make_shared<PBRegroupPlacesOperation>(dictionary()));
    waitForQueues();
    EXPECT_EQ(workTree->size(), 1U) << "an emptied group goes";
    const std::size_t before = publishedCounts().size();
    factory->attach(std::make_shared<PBRegroupPlacesOperation>(dictionary()));
    waitForQueues();
    EXPECT_EQ(publishedCounts().size(), before) << "nothing waits";
}

TEST_F(AttachTest, EditedItemsKeepTheGroupsThatTheirRowsTell) {
    makePicture(u"a.jpg"_s);
    scan();
    execute(u"update ImageFile set ImageDPI = 300, ColorModel = 'RGB', Tag = '3'"_s);
    using namespace group;
    for (const auto& [type, value] :
         {std::pair(Resolution, PBValue(300)),
          {ColorModel, u"RGB"_s},
          {Tags, u"3"_s},
          {FileKind, u"jpg"_s},
          {Folder, path({})},
          {Flag, 1},
          {StarRating, 4}}) {
        groupBy(type);
        scan();
        items()[0]->setStar(4);
        items()[0]->setFlagged(true);
        edit(u"a.jpg");
        waitForQueues();
        ASSERT_EQ(workTree->size(), 1U) << type;
        EXPECT_EQ(workTree->front()->value(), value) << type;
        EXPECT_EQ(workTree->front()->imageFileCount(), 1U) << type;
    }
}

/// The name on the disk is another one, and the display has not heard of it yet.
TEST_F(AttachTest, APhotographThatTheUserRenamesWhileItIsLookedForStaysWhatItIs) {
    makePicture(u"a.jpg"_s);
    scan();
    const qint64 id = items()[0]->fileId();
    QFile::rename(path(u"a.jpg"_s), path(u"b.jpg"_s));
    execute(u"update ImageFile set FileName = 'b.jpg'"_s);
    watch(true);
    EXPECT_EQ(shown(), QStringList());
    const PBUpdateFileItemOperation::Edited renamed{
        .fileIds = {id}, .items = {}, .moves = false, .areRenamed = true, .readAgain = {}};
    factory->attach(std::make_shared<PBUpdateFileItemOperation>(dictionary(), renamed));
    waitForQueues();
    EXPECT_EQ(shown(), words("b.jpg"));
    EXPECT_EQ(rows(u"select Id from ImageFile"_s), QStringList(QString::number(id)));
}

/// The scan has read both rows, and only one of them is an item.
TEST_F(AttachTest, WhatIsEditedBetweenItsRowAndItsItemIsReadAnew) {
    makePictures("a.jpg b.jpg");
    scan();
    const qint64 both = items()[0]->fileId() + items()[1]->fileId();
    qint64 later = 0;
    PBScanDictionaryRef scanned;
    changeServices([&](ScanServices& changed) {
        changed.now = [&] {
            if (const auto dictionary = std::exchange(scanned, nullptr)) {
                later = both - items().at(0)->fileId();
                EXPECT_TRUE(scanFiles.executeUpdate(
                    u"update ImageFile set FileStars = 5 where Id = ?"_s, later));
                PBUpdateFileItemOperation::Edited edited;
                edited.fileIds = {later};
                attachScanOperation(
                    dictionary->AttachOperationArray, scanQueue,
                    std::make_shared<PBUpdateFileItemOperation>(dictionary, edited), [] {});
                now = now + 2; // so that it publishes, and looks at what is attached
            }
            return now.load();
        };
    });
    scanQueue.setSuspended(true);
    startScan();
    scanned = dictionary();
    waitForQueues();
    for (const auto& item : items())
        EXPECT_EQ(item->star(), item->fileId() == later ? 5U : 0U);
    EXPECT_NE(later, 0);
}

/// The scans read the former row until the new one is stored, and come to the file meanwhile.
TEST_F(AttachTest, ARenameThatIsOnItsWayGivesNoFileASecondRow) {
    makePicture(u"a.jpg"_s);
    scan();
    const QStringList ids = rows(u"select Id from ImageFile"_s);
    using Step = std::function<void()>;
    const auto atOnce = [](const Step& step) { step(); };
    const auto whileRowsChange = [&](const Step& step) { factory->whileRowsChange(step); };
    const auto rename = [&](const char* from, const char* to, auto&& looking, auto&& storing) {
        const QString name = QLatin1StringView(to);
        QFile::rename(path(QLatin1StringView(from)), path(name));
        importers.willRead = [&](const QString&) {
            storing([&] { execute(u"update ImageFile set FileName = '%1'"_s.arg(name)); });
        };
        looking([&] { watch(false, {{path({}), false}}); });
        EXPECT_EQ(rows(u"select Id from ImageFile"_s), ids) << to;
    };
    rename("a.jpg", "b.jpg", whileRowsChange, atOnce);
    rename("b.jpg", "c.jpg", atOnce, whileRowsChange);
}

/// The watcher tells of it while the scan has files in hand, or has stored them and not shown them.
TEST_F(AttachTest, WhatGoesDuringAScanLeavesNoRowsAndWhatStaysOrComesAgainHasThemOnce) {
    enum What { File, Folder, FolderThatComesAgain, Nothing };
    for (int round = 0; round < 8; ++round) {
        const auto what = static_cast<What>(round % 4);
        makePicture(u"1/a.jpg"_s);
        scan();
        makePictures("1/b.jpg 1/c.jpg 1/d.jpg");
        scanQueue.setSuspended(true);
        startScan();
        const auto check = std::make_shared<PBCheckFileItemExistAttachOperation>(
            dictionary(), QStringList(), false);
        const auto mailbox = dictionary()->AttachOperationArray;
        const auto look = rescan(u"1"_s);
        const QString away = temporary.filePath(u"away"_s);
        QStringList read;
        importers.willRead = [&](const QString& file) {
            read.append(file);
            if (read.size() != 2 + round / 4) return;
            if (what == Nothing) return mailbox->add(look);
            QFile::rename(what == File ? read.constFirst() : path(u"1"_s), away);
            mailbox->add(check);
            if (what != FolderThatComesAgain) return;
            mailbox->add(std::make_shared<Work>(
                [this, away](auto&, bool) { QFile::rename(away, path(u"1"_s)); }));
            mailbox->add(look);
        };
        waitForQueues();
        importers.willRead = {};
        expectConsistentCatalogue();
        QStringList left;
        if (what != Folder) left = words("a.jpg b.jpg c.jpg d.jpg");
        if (what == File) left.removeOne(QFileInfo(read.constFirst()).fileName());
        EXPECT_EQ(images(), left) << round;
        EXPECT_EQ(support::sorted(shown()), left) << round;
        for (const QString& name : {away, path(u"1"_s)})
            QFileInfo(name).isDir() ? QDir(name).removeRecursively() : QFile::remove(name);
        scan();
    }
}

/// The catalogue's rows of a folder that was away when they were visited go at the end.
TEST_F(AttachTest, AFolderThatComesAgainBeforeItsRowsGoKeepsWhatWasFoundInIt) {
    QStringList all{u"a.jpg"_s, u"new.jpg"_s};
    makePicture(u"1/a.jpg"_s);
    scan(); // so its row is the first
    for (int i = 0; i < 25; ++i) {
        all.append(u"%1.jpg"_s.arg(i));
        makePicture(u"2/"_s + all.last());
    }
    scan();
    const QString away = temporary.filePath(u"away"_s);
    QFile::rename(path(u"1"_s), away);
    std::function<void()> midway;
    changeServices([&](ScanServices& changed) {
        changed.now = [this] { return now = now + 0.25; };
        changed.waitsForDisplay = [&] {
            if (midway) std::exchange(midway, {})();
            return false;
        };
    });
    scanQueue.setSuspended(true);
    startScan();
    const auto mailbox = dictionary()->AttachOperationArray;
    midway = [&, look = rescan(u"1"_s)] {
        QFile::rename(away, path(u"1"_s));
        makePicture(u"1/new.jpg"_s);
        mailbox->add(look);
    };
    waitForQueues();
    expectConsistentCatalogue();
    EXPECT_EQ(images(), support::sorted(all));
    EXPECT_EQ(support::sorted(shown()), images());
}

/// The watcher tells of files while the catalogue's rows are visited.
TEST_F(AttachTest, NewFilesOfAFolderThatIsStillToBeVisitedAreShownOnce) {
    makePictures("0/a.jpg 1/b.jpg");
    scan();
    makePicture(u"1/new.jpg"_s);
    scanQueue.setSuspended(true);
    startScan();
    tell(false, {{path(u"1"_s), false}});
    waitForQueues();
    EXPECT_EQ(shown(), words("a.jpg b.jpg new.jpg"));
}

TEST_F(AttachTest, AFileThatWasStoredHalfIsStoredAnewWhenItsWriterHasFinished) {
    makePictures("half.jpg other.jpg");
    scan();
    const QString all = u"select Id,ImageWidth from ImageFile order by FileName"_s;
    const QStringList before = rows(all); // of half.jpg, and of the other
    makePicture(u"half.jpg"_s, {80, 60});
    makePicture(u"other.jpg"_s, {80, 60});
    const QStringList rewritten{path(u"half.jpg"_s)};
    items()[0]->setIsSelected(true);
    const std::size_t published = publishedCounts().size();
    watch(false, {{path({}), false}}, rewritten);
    const auto counts = publishedCounts();
    EXPECT_GT(counts.size(), published);
    EXPECT_EQ(std::ranges::count(counts, 2U), counts.size()) << "never without it";
    EXPECT_TRUE(items()[0]->isSelected());
    EXPECT_FALSE(items()[1]->isSelected());
    const QStringList stored = rows(all);
    EXPECT_EQ(stored[0].section(u'|', 1), u"80") << "and not as it was";
    EXPECT_EQ(stored[1], before[1]) << "rewritten in place: the next visit sees it";
    watch(true, {{path({}), false}}, rewritten); // told, and as it is stored
    EXPECT_EQ(rows(all), stored);
    EXPECT_EQ(shown(), words("half.jpg other.jpg"));
    // It is written to again before it could be read: it is not shown as it was.
    makePicture(u"half.jpg"_s, {90, 60});
    changeServices([](ScanServices& cautious) {
        cautious.isBeingWritten = [](const QString& file) { return file.endsWith(u"/half.jpg"); };
    });
    watch(false, {{path({}), false}}, rewritten);
    EXPECT_EQ(shown(), words("other.jpg"));
}

TEST_F(AttachTest, ChecksThatWaitForOneTreeWalkItOnce) {
    makePictures("a.jpg b.jpg");
    scan();
    scanQueue.setSuspended(true);
    const auto mailbox = dictionary()->AttachOperationArray;
    tell(false, {}, {path(u"none.jpg"_s)});
    tell(true, {}, {path(u"a.jpg"_s)});
    auto otherTree = std::make_shared<PBGroupItemArray>();
    std::swap(workTree, otherTree);
    tell(true);
    std::swap(workTree, otherTree);
    makePicture(u"a.jpg"_s, {80, 60});
    QFile::remove(path(u"b.jpg"_s));
    const std::uint64_t before = mailbox->takenCount();
    waitForQueues();
    EXPECT_EQ(mailbox->takenCount() - before, 4U) << "with two ends of rewriting";
    EXPECT_EQ(images(), QStringList()) << "what each of them was to look at";
}

TEST_F(AttachTest, ChangesOnDiskReachTheTreeAndTheCatalogue) {
    // Groups of 100, 1 and 5.
    const auto nameOf = [](int i) {
        return u"%1/%2.jpg"_s.arg(i < 100 ? 0 : i == 100 ? 1 : 2).arg(i);
    };
    for (int i = 0; i < 106; ++i)
        makePicture(nameOf(i), {2, 2});
    groupBy(group::Folder);
    scan();
    for (int i = 0; i < 106; ++i)
        QFile::remove(path(nameOf(i)));
    makePictures("0/new.jpg 1/below/deep.jpg 2/unseen.jpg");

    std::vector<std::size_t> counts = publishedCounts();
    watch(true);
    counts.insert(counts.end(), {5, 0}); // above 100, and at the end
    EXPECT_EQ(publishedCounts(), counts);
    watch(true);
    scanQueue.addOperation(std::make_shared<PBCheckFileItemExistOperation>(dictionary()));
    waitForQueues();
    EXPECT_EQ(publishedCounts(), counts) << "nothing for a tree without items";
    EXPECT_EQ(count(files, "ImageFile") + count(thumbnails, "Thumbnail"), 0);
    EXPECT_EQ(count(files, "Folder"), 3);

    finished = 0;
    watch(true, {{path(u"0"_s), false}, {path(u"1"_s), true}, {u"/nowhere"_s, true}});
    EXPECT_EQ(shown(), words("new.jpg deep.jpg"));
    EXPECT_EQ(finished, 2) << "each look into a folder ends by itself";

    QFile::remove(path(u"0/new.jpg"_s));
    watch(true, {{path(u"2"_s), false}});
    EXPECT_EQ(shown(), words("deep.jpg unseen.jpg"));
    expectConsistentCatalogue();
}
