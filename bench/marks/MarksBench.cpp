// What marks cost: the disk pass with a ledger of 20,000 photographs that are looked for against
// one with an empty ledger, and an edit of 10,000 photographs against the bare updates of both
// files. An argument scales the pictures of the disk pass: 0.01 is quick.

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/marks/MarksFile.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "codec/process/FrameReader.h"
#include "fileactions/marks/MarksEdit.h"
#include "scan/HeadlessScan.h"
#include "scan/PictureSets.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cmath>
#include <cstdlib>
#include <numeric>
#include <random>
#include <span>
#include <vector>

namespace {

constexpr int ledgerRows = 20'000;
constexpr int editedPhotographs = 10'000;
constexpr int pairs = 9;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "bench_marks: %s failed\n", what);
    std::exit(1);
}

QString inProfile(const QTemporaryDir& profile, const char* name) {
    return profile.filePath(QString::fromLatin1(name));
}

std::unique_ptr<FMDatabase> openBoth(const QTemporaryDir& profile) {
    const QString files = inProfile(profile, "files.db");
    FMDatabase db(files);
    require(db.open() && PBCatalogue(db).checkTables_FilesDb(), "making the catalogue");
    const QString marksPath = inProfile(profile, "marks.db");
    require(
        marks::settleLedger(marksPath, inProfile(profile, "snapshots")).isEmpty(),
        "making the ledger");
    auto both = marks::MarksLedger::connect(files, marksPath);
    require(both != nullptr, "opening both files");
    return both;
}

/// Photographs that are nowhere, of the sizes that cameras make.
void fillLedger(FMDatabase& both) {
    std::mt19937 random(3);
    FMTransaction transaction(both);
    require(marks::bindLedger(both, {}), "binding");
    marks::MarksLedger ledger(both);
    for (int number = 0; number < ledgerRows; ++number) {
        marks::Trace trace;
        trace.rootPath = "/home/somebody/Pictures";
        trace.relativePath = "Trip " + QByteArray::number(number / 200) + "/IMG_" +
                             QByteArray::number(number) + ".JPG";
        trace.size = static_cast<qint64>(2'000'000 + random() % 8'000'000);
        trace.modificationDate = 1.7e9 + number;
        trace.digest = QByteArray(32, static_cast<char>(number));
        require(
            ledger.insert(trace, {.stars = 4, .flag = {}, .tags = {}, .rotation = {}}) > 0,
            "filling");
    }
    require(transaction.commit(), "filling");
}

double diskPass(const QString& pictures, bool withLedger) {
    const QTemporaryDir profile;
    {
        const auto both = openBoth(profile);
        if (withLedger) fillLedger(*both);
    }
    bench::HeadlessScan scan(profile.path(), pictures);
    return bench::millisecondsOf([&] { scan.scan(false); });
}

std::vector<qint64> addPhotographs(FMDatabase& db) {
    PBCatalogue catalogue(db);
    FMTransaction transaction(db);
    const qint64 root =
        catalogue.insertFolderAliasWithData("bookmark", 0, QStringLiteral("/pictures"), qint64(0));
    const qint64 folder = catalogue.insertFolderWithAliasId(root, {});
    std::vector<qint64> ids;
    for (int number = 0; number < editedPhotographs; ++number) {
        ids.push_back(catalogue.insertImageFileWithDictionary(
            {{QStringLiteral("FolderId"), folder},
             {QStringLiteral("FileName"), QStringLiteral("%1.jpg").arg(number)},
             {QStringLiteral("FileSize"), 1000},
             {QStringLiteral("FileStars"), 0},
             {QStringLiteral("FileFlag"), 0}}));
    }
    require(transaction.commit(), "adding photographs");
    return ids;
}

/// Row by row with statements that are kept, in one transaction over both files.
double bareUpdates(FMDatabase& both, const std::vector<qint64>& ids, int stars) {
    return bench::millisecondsOf([&] {
        FMTransaction transaction(both);
        for (const qint64 id : ids) {
            both.executeUpdate(
                QStringLiteral("update ImageFile set FileStars = ? where Id = ?"), stars, id);
            both.executeUpdate(
                QStringLiteral("update Marks set Stars = ? where FileId = ?"), stars, id);
        }
        require(transaction.commit(), "bare updates");
    });
}

double edit(FMDatabase& both, const std::vector<qint64>& ids, int stars) {
    return bench::millisecondsOf([&] {
        const auto stored = fileactions::storeEdit(
            both, {{1, QStringLiteral("/pictures")}},
            {.photographs =
                 {{.fileIds = ids,
                   .change = {.stars = stars, .flag = {}, .tags = {}, .rotation = {}}}},
             .paths = {}});
        require(std::holds_alternative<fileactions::PerformedEdit>(stored), "the edit");
    });
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QCoreApplication application(argc, argv);
    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(pool);
    pool->start();
    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.001, 10.0) : 1.0;
    const bench::PictureSet set{
        static_cast<int>(std::lround(100'000 * scale)),
        std::max(1, static_cast<int>(std::lround(500 * scale))), bench::smallPicture, 30};
    const QString pictures = set.folder();

    bool met = bench::printMedianRatio(
        "disk pass with 20,000 in the ledger / with none", pairs,
        [&] { return diskPass(pictures, false); }, [&] { return diskPass(pictures, true); }, 1.05);
    {
        const QTemporaryDir profile;
        const auto both = openBoth(profile);
        const auto ids = addPhotographs(*both);
        edit(*both, ids, 1);
        int stars = 0;
        const auto next = [&] { return stars = stars % 5 + 1; };
        met = bench::printMedianRatio(
                  "10,000 marks in one edit / bare updates of both files", pairs,
                  [&] { return bareUpdates(*both, ids, next()); },
                  [&] { return edit(*both, ids, next()); }, 1.5) &&
              met;
    }
    codec::setFrameReader(nullptr);
    return met ? 0 : 1;
}
