#include "shell/large/OpenedPhotograph.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/marks/TurnedFile.h"
#include "core/Paths.h"
#include "group/FileItemOfRow.h"
#include "group/PBImageFileItem.h"
#include "image/large/EarlyPhotograph.h"
#include "image/large/PBLoadImageManager.h"
#include "library/PBAliasManager.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/FileServices.h"
#include "shell/services/ShellServices.h"

#include <QFile>

#include <utility>

namespace {

/// No row of the catalogue has such an id.
constexpr qint64 standInId = -1;

} // namespace

OpenedPhotograph::OpenedPhotograph(Parts parts) : _parts(std::move(parts)) {}

OpenedPhotograph::~OpenedPhotograph() = default;

void OpenedPhotograph::begin(const OpenFilesRequest::NamedFile& file) {
    platform::assertMainThread();
    await(file);
    if (!isAwaited()) return;
    _alive = std::make_shared<bool>(true);
    EarlyPhotograph::shared().begin(path(), _parts.services.loadImageManager.screen());
    if (file.values) _standIn = cataloguedItem(*file.values);
    if (!_standIn) makeStandInFromFile();
}

void OpenedPhotograph::await(const OpenFilesRequest::NamedFile& file) {
    dropStandIn();
    _folderPath = file.folderPath;
    _name = file.fileName;
}

void OpenedPhotograph::dropStandIn() {
    _alive.reset();
    _standIn.reset();
}

void OpenedPhotograph::end() {
    dropStandIn();
    _name.clear();
}

QString OpenedPhotograph::path() const {
    return platform::pathInFolder(_folderPath, _name);
}

std::shared_ptr<PBImageFileItem>
OpenedPhotograph::cataloguedItem(const platform::ResourceValues& values) const {
    QString relativePath;
    const auto root = _parts.services.aliasManager.appropriateAliasObjectForPath(
        _folderPath, &relativePath, false);
    if (!root) return nullptr;
    FMDatabase& db = _parts.services.mainFileDb;
    PBCatalogue catalogue(db);
    const auto folderId = catalogue.findFolderIdByAliasId(
        root->aliasId(), relativePath.isEmpty() ? std::nullopt : std::optional(relativePath));
    if (folderId.value_or(0) <= 0) return nullptr;
    const auto fileId = catalogue.findImageFileIdByFolderId(*folderId, _name, nullptr, nullptr);
    if (fileId.value_or(0) <= 0) return nullptr;
    FMResultSet cursor =
        db.executeQuery(group::ImageFileRow::queryForIds(), QStringLiteral("[%1]").arg(*fileId));
    if (!cursor.next()) return nullptr;
    auto item = group::fileItemOfRow(group::ImageFileRow::fromResultSet(cursor));
    const bool isSame = static_cast<quint64>(values.fileSize) == item->fileSize() &&
                        values.modificationDate == item->modifiedDate();
    return isSame && !item->imageSize().isEmpty() ? std::move(item) : nullptr;
}

void OpenedPhotograph::makeStandInFromFile() {
    const auto take = [this, alive = std::weak_ptr(_alive)](const EarlyPhotograph::Seen& seen) {
        if (alive.expired() || _standIn) return;
        const auto& values = seen.values;
        _standIn = PBImageFileItem::imageFileItemWithId(
            standInId, standInId, _name, static_cast<quint64>(values.fileSize),
            values.modificationDate);
        _standIn->setImageSize(seen.imageSize);
        // What the user turned in an earlier run, the ledger knows alone.
        const auto both = _parts.services.files.connect ? _parts.services.files.connect() : nullptr;
        const auto turned =
            both ? marks::rotationOfFile(
                       *both, QFile::encodeName(path()), values.fileSize, values.modificationDate)
                 : std::nullopt;
        _standIn->setRotateAngle(turned ? *turned : seen.rotateAngle);
        _parts.standInCame();
    };
    EarlyPhotograph::shared().observe(path(), take);
}

bool OpenedPhotograph::isIt(const PBImageFileItem& item) const {
    group::FolderPathCache none;
    return item.fileName() == _name &&
           PBUtilities::comparePath(item.folderPath(_parts.folderPaths, none), _folderPath) == 0;
}

QString OpenedPhotograph::pathOfFolderId(qint64 folderId) const {
    return folderId == standInId ? _folderPath : _parts.folderPaths.pathOfFolderId(folderId);
}
