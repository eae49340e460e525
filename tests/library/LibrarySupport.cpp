#include "library/LibrarySupport.h"

#include "catalogue/PBCatalogue.h"

using platform::Resolution;

Resolution ToldAliasServices::resolveAlias(const PBAliasObject& aliasObject, bool, QString* error) {
    ++resolved;
    const auto told = answers.find(aliasObject.aliasData());
    if (told == answers.end()) return {};
    if (error && told->second.outcome == Resolution::Outcome::VolumeAbsent) *error = u"no disk"_s;
    return told->second;
}

bool ToldAliasServices::storeReservePath(std::int64_t aliasId, const QString& reservePath) {
    return PBCatalogue(_db).updateFolderAliasWithIdReservePath(aliasId, reservePath);
}

std::optional<QStringList>
StoppableLister::list(const QString&, const QString& folder, LateAnswer late) {
    ++listed;
    if (!isSlow) return subfolderNames(folder);
    _waiting.emplace_back([folder, late = std::move(late)] { late(subfolderNames(folder)); });
    return std::nullopt;
}

void StoppableLister::letGo() {
    for (const auto& answer : std::exchange(_waiting, {}))
        answer();
}

LibraryTest::LibraryTest()
    : db(QString()), manager({db, services, [this](std::vector<std::int64_t> fileIds) {
                                  removedThumbnails = std::move(fileIds);
                              }}) {
    EXPECT_TRUE(db.open());
    EXPECT_TRUE(PBCatalogue(db).checkTables_FilesDb());
}

LibraryTest::~LibraryTest() = default;

std::shared_ptr<PBAliasObject>
LibraryTest::addRoot(const QString& path, std::uint64_t type, std::uint64_t state) {
    const QByteArray data = path.toUtf8();
    services.answers[data] = {Resolution::Outcome::Found, path};
    const auto aliasId = PBCatalogue(db).insertFolderAliasWithData(
        data, static_cast<int>(type), path, static_cast<qint64>(state));
    const auto root = PBAliasObject::aliasObjectWithId(
        aliasId, data, QUrl::fromLocalFile(path), path, state, type);
    manager.addAliasObject(root);
    return root;
}

std::int64_t LibraryTest::addFolder(const PBAliasObject& root, const QString& relativePath) {
    return PBCatalogue(db).insertFolderWithAliasId(root.aliasId(), relativePath);
}

std::int64_t LibraryTest::addImage(std::int64_t folderId, const QString& name) {
    PBCatalogue catalogue(db);
    const auto fileId = catalogue.insertImageFileWithDictionary(
        {{u"FolderId"_s, PBValue(static_cast<qint64>(folderId))}, {u"FileName"_s, name}});
    catalogue.insertExifWithImageFileId(fileId, {});
    return fileId;
}

void LibraryTest::answer(const PBAliasObject& root, Resolution::Outcome outcome, QString path) {
    services.answers[root.aliasData()] = {outcome, std::move(path)};
}

QString LibraryTest::path(QStringView below) const {
    return _folder.path() + u'/' + below.toString();
}

QString LibraryTest::make(QStringView below) {
    QDir().mkpath(path(below));
    return path(below);
}
