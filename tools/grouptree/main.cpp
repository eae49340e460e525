#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "group/GroupPresets.h"
#include "group/GroupingStep.h"
#include "grouptree/Pictures.h"
#include "places/PBGeoManager.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

#include <optional>

namespace {

using namespace group;

struct Options {
    std::vector<GroupChain> chains;
    int sortType = 1;
    bool descending = false;
    bool withFiles = false;
};

std::optional<GroupChain> parseChain(const QString& text) {
    GroupChain chain;
    if (text.isEmpty()) return chain;
    for (const QString& part : text.split(u',')) {
        bool isNumber = false;
        chain.push_back(part.toInt(&isNumber));
        if (!isNumber) return std::nullopt;
    }
    return chain;
}

/// Roots where they were last seen; nothing is mounted for this.
class LastSeenRoots final : public FolderRootPaths {
public:
    explicit LastSeenRoots(FMDatabase& database) : _database(database) {}
    [[nodiscard]] QString mountedPathOfAliasId(qint64 aliasId) const override {
        FMResultSet row = _database.executeQuery(
            QStringLiteral("select ReservePath from FolderAlias where Id = ?"), aliasId);
        return row.next() ? row.stringForColumnIndex(0) : QString();
    }

private:
    FMDatabase& _database;
};

void insertFolder(GroupingStep& step, FMDatabase& database, qint64 folderId, const QString& path) {
    const auto& parameters = step.parameters();
    std::vector<ImageFileRow> rows;
    {
        FMResultSet cursor = database.executeQuery(
            ImageFileRow::queryForFolder(
                parameters.sortType, parameters.descendingSort, parameters.filter),
            folderId);
        while (cursor.next())
            rows.push_back(ImageFileRow::fromResultSet(cursor));
    }
    step.willInsert(rows);
    for (const ImageFileRow& row : rows)
        step.insert(row, path);
}

void print(
    QTextStream& out, const PBGroupItem& node, const TagLookup& tags, int depth, bool withFiles) {
    const QString indent(depth * 2, u' ');
    out << indent << node.displayName(tags) << "  [" << node.imageFileCount() << "]\n";
    for (const auto& child : node.children())
        print(out, *child, tags, depth + 1, withFiles);
    if (!withFiles) return;
    for (const auto& item : node.imageFiles())
        out << indent << "  " << item->fileName() << '\n';
}

void printTree(
    QTextStream& out, FMDatabase& database, PlaceAddresses& places, const GroupChain& chain,
    const Options& options) {
    PBCatalogue catalogue(database);
    const auto tree = std::make_shared<PBGroupItemArray>();
    GroupingStep step(
        {tree, chain, options.sortType, options.descending, {}, 0}, database, &places);
    std::vector<qint64> folderIds;
    {
        FMResultSet folders = database.executeQuery(QStringLiteral("select Id from Folder"));
        while (folders.next())
            folderIds.push_back(folders.longLongIntForColumnIndex(0));
    }
    const LastSeenRoots roots(database);
    for (const qint64 folderId : folderIds)
        insertFolder(step, database, folderId, catalogue.pathOfFolderId(folderId, roots));
    out << "== " << titleOfChain(chain) << '\n';
    const TagLookup tags = [&](qint64 id) { return catalogue.tagWithTagId(id); };
    for (const auto& node : *tree)
        print(out, *node, tags, 0, options.withFiles);
}

/// Opens the catalogue file, or makes a catalogue in memory of the pictures below a folder.
bool fill(FMDatabase& database, const QString& source) {
    if (!database.open()) return false;
    PBCatalogue catalogue(database);
    if (!QFileInfo(source).isDir()) return catalogue.isTableExist(QStringLiteral("ImageFile"));
    return catalogue.checkTables_FilesDb() && catalogueFolder(catalogue, source) > 0;
}

int run(const QString& source, const Options& options) {
    const QFileInfo info(source);
    FMDatabase database(info.isFile() ? source : QString());
    if (!info.exists() || !fill(database, source)) {
        QTextStream(stderr) << source << " is neither a catalogue nor a folder with pictures\n";
        return 1;
    }
    PBGeoManager geo(nullptr, {.postToMainThread = [](const std::function<void()>&) {}});
    geo.loadAddressFromDb(database);
    GeoManagerAddresses places(geo);
    QTextStream out(stdout);
    for (const GroupChain& chain : options.chains)
        printTree(out, database, places, chain, options);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Groups the images of a catalogue, or the pictures below a folder, and "
                       "prints the tree."));
    parser.addHelpOption();
    const QCommandLineOption chainOption(
        QStringLiteral("chain"), QStringLiteral("Group types, such as 3,5; may be repeated."),
        QStringLiteral("TYPES"));
    const QCommandLineOption eachOption(
        QStringLiteral("each"), QStringLiteral("Group by each of the 64 types in turn."));
    const QCommandLineOption sortOption(
        QStringLiteral("sort"), QStringLiteral("Sort type, 0 to 6."), QStringLiteral("TYPE"),
        QStringLiteral("1"));
    const QCommandLineOption descendingOption(
        QStringLiteral("descending"), QStringLiteral("The largest first."));
    const QCommandLineOption filesOption(
        QStringLiteral("files"), QStringLiteral("Print the images, too."));
    parser.addOptions({chainOption, eachOption, sortOption, descendingOption, filesOption});
    parser.addPositionalArgument(
        QStringLiteral("SOURCE"), QStringLiteral("A file files.db, or a folder."));
    parser.process(application);
    if (parser.positionalArguments().size() != 1) parser.showHelp(2);

    Options options;
    for (const QString& text : parser.values(chainOption)) {
        const auto chain = parseChain(text);
        if (!chain) parser.showHelp(2);
        options.chains.push_back(*chain);
    }
    for (int type = 0; parser.isSet(eachOption) && type < groupTypeCount; ++type)
        options.chains.push_back({type});
    if (options.chains.empty()) options.chains.push_back({CaptureYear, Folder});
    bool isType = false;
    options.sortType = parser.value(sortOption).toInt(&isType);
    if (!isType || options.sortType < 0 || options.sortType > 6) parser.showHelp(2);
    options.descending = parser.isSet(descendingOption);
    options.withFiles = parser.isSet(filesOption);
    return run(parser.positionalArguments().front(), options);
}
