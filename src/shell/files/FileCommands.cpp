#include "shell/files/FileCommands.h"

#include "codec/Bitmaps.h"
#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "group/ItemOrder.h"
#include "group/PBGroupTreeDataSource.h"
#include "platform/desktop/Pasteboard.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "shell/files/PhotographMimeData.h"
#include "shell/services/ChosenPhotographs.h"

#include <QBuffer>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QImageReader>
#include <QMimeData>
#include <QSet>

#include <algorithm>
#include <utility>

using fileactions::FileOutcome;
using fileactions::TransferPlan;
using platform::localizedFormat;
using platform::localizedString;
using Deed = FileQuestions::Deed;

namespace {

const QString counterOfCopy = QStringLiteral("ItemCountInfoWithCopy");
const QString counterOfMove = QStringLiteral("ItemCountInfoWithMove");

std::error_code writePng(const QImage& image, QByteArray& content) {
    QBuffer buffer(&content);
    const bool isWritten = !image.isNull() && image.save(&buffer, "PNG");
    return isWritten ? std::error_code() : std::make_error_code(std::errc::bad_message);
}

/// The photograph as others see it who know neither turns nor profiles: upright, in sRGB.
QByteArray pngOf(
    PBImageImporterManager& importers, const QString& path, double angle,
    const std::stop_token& stop) {
    const auto importer = importers.imageImporterForImageURL(path);
    if (!importer || stop.stop_requested()) return {};
    codec::DecodeRequest request;
    request.urgency = codec::Urgency::Next;
    QImage image = importer->readImage(request, stop).frame.image;
    if (angle != 0) image = PBUtilities::rotateImageRef(image, angle);
    if (image.isNull() || stop.stop_requested()) return {};
    constexpr int quick = 80; // of 100, which compresses little: somebody waits for it
    QByteArray file;
    QBuffer buffer(&file);
    return image.save(&buffer, "PNG", quick) && !stop.stop_requested() ? file : QByteArray();
}

/// The picture that the pasteboard has instead of a file; nothing without one. Made a file where
/// nobody waits for it.
std::optional<TransferPlan::File> pictureOf(const QMimeData& data) {
    TransferPlan::File picture{.source = {}, .folder = {}, .name = {}, .content = QByteArray()};
    const QString png = QStringLiteral("image/png");
    if (data.hasFormat(png)) {
        if (QByteArray bytes = data.data(png); !bytes.isEmpty()) {
            picture.content = std::move(bytes);
            return picture;
        }
    }
    if (!data.hasImage()) return std::nullopt;
    const QList<QByteArray> readable = QImageReader::supportedMimeTypes();
    for (const QString& format : data.formats()) {
        if (!readable.contains(format.toLatin1())) continue;
        const QByteArray bytes = data.data(format);
        if (bytes.isEmpty()) continue;
        picture.make = [bytes](const std::stop_token&, QByteArray& content) {
            return writePng(QImage::fromData(bytes), content);
        };
        return picture;
    }
    const auto image = qvariant_cast<QImage>(data.imageData());
    if (image.isNull()) return std::nullopt;
    picture.make = [image](const std::stop_token&, QByteArray& content) {
        return writePng(image, content);
    };
    return picture;
}

/// The nodes that lead to these photographs, for each leaf that has some.
std::vector<PBGroupItemChain>
chainsOf(const PBGroupTreeDataSource& source, const QSet<qint64>& fileIds) {
    std::vector<PBGroupItemChain> chains;
    if (fileIds.isEmpty()) return chains;
    for (const PBGroupItem* leaf : source.leafGroupItemArray()) {
        std::shared_ptr<PBGroupItem> part;
        for (const auto& item : leaf->imageFiles()) {
            if (!fileIds.contains(item->fileId())) continue;
            if (!part) part = std::make_shared<PBGroupItem>(nullptr, leaf->data());
            part->sortAddImageFileItem(item, group::SortNone, false);
        }
        if (!part) continue;
        PBGroupItemChain chain{std::move(part)};
        for (const PBGroupItem* node = leaf->parent(); node; node = node->parent())
            chain.insert(chain.begin(), std::make_shared<PBGroupItem>(nullptr, node->data()));
        chains.push_back(std::move(chain));
    }
    return chains;
}

} // namespace

FileCommands::~FileCommands() {
    // Its own pasteboard data may outlive it.
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (const auto* own = qobject_cast<const PhotographMimeData*>(data)) own->stop();
}

std::vector<QByteArray> FileCommands::chosenPaths() const {
    std::vector<QByteArray> paths;
    group::FolderPathCache cache;
    for (const auto& item : _environment.chosen.all()) {
        const QString path = item->filePath(_environment.folderPaths, cache);
        if (!path.isEmpty()) paths.push_back(QFile::encodeName(path));
    }
    return paths;
}

TransferPlan FileCommands::planOf(TransferPlan::Kind kind, const QString& folder) const {
    TransferPlan plan{.kind = kind, .steps = {}};
    group::FolderPathCache cache;
    for (const auto& item : _environment.chosen.all()) {
        const QString path = item->filePath(_environment.folderPaths, cache);
        if (!path.isEmpty())
            plan.addFile(QFile::encodeName(path), QFile::encodeName(folder), item->fileId());
    }
    return plan;
}

void FileCommands::doCopyMoveTo(bool move) {
    if (chosenPaths().empty()) return;
    const auto kind = move ? TransferPlan::Kind::Move : TransferPlan::Kind::Copy;
    _environment.questions.chooseFolder(
        localizedString(move ? u"ChooseMoveFolder" : u"ChooseCopyFolder"),
        [this, kind, plan = planOf(kind, {})](const QString& folder) mutable {
            if (folder.isEmpty()) return;
            for (auto& step : plan.steps)
                step.file.folder = QFile::encodeName(folder);
            const bool isMove = kind == TransferPlan::Kind::Move;
            runTransfer(
                plan, isMove ? Name{u"UndoMoveFile", u"UndoMoveFiles"}
                             : Name{u"UndoCopyFile", u"UndoCopyFiles"});
        });
}

TransferPlan FileCommands::groupPlan(bool move, const QString& folder) const {
    TransferPlan plan{
        .kind = move ? TransferPlan::Kind::Move : TransferPlan::Kind::Copy, .steps = {}};
    group::FolderPathCache cache;
    const auto take = [&](const QString& path, const std::shared_ptr<PBImageFileItem>& item) {
        const QByteArray into = QFile::encodeName(platform::pathInFolder(folder, path));
        if (!item) {
            plan.addFolder(into);
            return true;
        }
        const QString source = item->filePath(_environment.folderPaths, cache);
        if (!source.isEmpty()) plan.addFile(QFile::encodeName(source), into, item->fileId());
        return true;
    };
    for (const auto& root : _environment.groupTreeDataSource.groupItemArray())
        static_cast<void>(root->copyMoveToWithBlock(take, _environment.tagWithTagId));
    return plan;
}

void FileCommands::doGroupCopyMoveTo(bool move) {
    platform::assertMainThread();
    if (_environment.groupTreeDataSource.groupItemArray().empty()) return;
    _environment.questions.chooseFolder(
        localizedString(move ? u"ChooseGroupMoveFolder" : u"ChooseGroupCopyFolder"),
        [this, move](const QString& folder) {
            if (folder.isEmpty()) return;
            runTransfer(
                groupPlan(move, folder), move ? Name{u"UndoMoveFile", u"UndoMoveFiles"}
                                              : Name{u"UndoCopyFile", u"UndoCopyFiles"});
        });
}

void FileCommands::doDuplicate() {
    runTransfer(
        planOf(TransferPlan::Kind::Duplicate, {}), {u"UndoDuplicateFile", u"UndoDuplicateFiles"});
}

void FileCommands::copy(bool cut) {
    platform::assertMainThread();
    const std::vector<QByteArray> paths = chosenPaths();
    if (paths.empty()) return;
    auto data = std::make_unique<PhotographMimeData>();
    platform::setFilesOfMimeData(*data, {.paths = paths, .isCut = cut});
    // Of several, one of which can be got at, it may be another one.
    const PBImageFileList chosen = _environment.chosen.all();
    if (chosen.size() == 1 && !cut) {
        data->offerPicture(
            _pictures, [importers = &_environment.imageImporterManager,
                        path = QFile::decodeName(paths.front()),
                        angle = chosen.front()->rotateAngle()](const std::stop_token& stop) {
                return pngOf(*importers, path, angle, stop);
            });
    }
    QGuiApplication::clipboard()->setMimeData(data.release());
}

std::vector<QByteArray> FileCommands::photographsOf(const QMimeData& data) const {
    std::vector<QByteArray> paths = platform::filesOfMimeData(data).paths;
    const QStringList types = _environment.imageImporterManager.supportImageTypes();
    std::erase_if(paths, [&types](const QByteArray& path) {
        const QString name = QFile::decodeName(platform::nameOfPath(path));
        const QString extension = PBUtilities::pathExtension(name).toString();
        return !PBUtilities::conformsToUTIArray(PBUtilities::extentionToUTI(extension), types);
    });
    return paths;
}

void FileCommands::doPaste() {
    platform::assertMainThread();
    const QString folder = _environment.selectedFolder();
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (folder.isEmpty() || !data) return;
    const bool isCut = platform::filesOfMimeData(*data).isCut;
    TransferPlan plan = fileactions::planTransfer(
        isCut ? TransferPlan::Kind::Move : TransferPlan::Kind::Copy, photographsOf(*data),
        QFile::encodeName(folder));
    if (plan.isEmpty() && !data->hasUrls()) {
        const QByteArray name = localizedString(u"PastedPicture").toUtf8();
        if (auto picture = pictureOf(*data)) {
            picture->source = name;
            picture->folder = QFile::encodeName(folder);
            picture->name = name;
            plan.addFile(std::move(*picture));
        }
    }
    runTransfer(
        plan,
        isCut ? Name{u"UndoMoveFile", u"UndoMoveFiles"} : Name{u"UndoPasteFile", u"UndoPasteFiles"},
        isCut);
}

/// What was cut is somewhere else from now on; what is still there can be pasted once more.
void FileCommands::forgetCut(const FileOutcome& outcome) {
    QClipboard& pasteboard = *QGuiApplication::clipboard();
    const QMimeData* data = pasteboard.mimeData();
    if (!data || outcome.gone.empty()) return;
    const platform::PasteboardFiles files = platform::filesOfMimeData(*data);
    if (!files.isCut) return;
    const QSet<QByteArray> gone(outcome.gone.begin(), outcome.gone.end());
    const auto isGone = [&gone](const QByteArray& path) { return gone.contains(path); };
    if (std::ranges::all_of(files.paths, isGone)) pasteboard.clear();
}

void FileCommands::transferInto(
    const QString& folder, const std::vector<QByteArray>& paths, bool move) {
    runTransfer(
        fileactions::planTransfer(
            move ? TransferPlan::Kind::Move : TransferPlan::Kind::Copy, paths,
            QFile::encodeName(folder)),
        move ? Name{u"UndoMoveFile", u"UndoMoveFiles"} : Name{u"UndoCopyFile", u"UndoCopyFiles"});
}

void FileCommands::runTransfer(const TransferPlan& plan, const Name& name, bool isOfCut) {
    platform::assertMainThread();
    if (plan.isEmpty()) return;
    const bool isMove = plan.kind == TransferPlan::Kind::Move;
    _environment.tasks.start(
        {.counterKey = isMove ? counterOfMove : counterOfCopy,
         .deed = isMove ? Deed::Move : Deed::Copy,
         .work = [plan](const fileactions::FileEditor& editor) { return editor.transfer(plan); },
         .finished =
             [this, name, isOfCut](const FileOutcome& outcome) {
                 if (isOfCut) forgetCut(outcome);
                 finished(outcome, name);
             }});
}

void FileCommands::deleteClicked() {
    runRemoval(planOf(TransferPlan::Kind::Move, {}), false);
}

void FileCommands::deleteForGood() {
    platform::assertMainThread();
    const TransferPlan chosen = planOf(TransferPlan::Kind::Move, {});
    if (chosen.isEmpty()) return;
    // What is chosen may be something else by the time of the answer.
    _environment.questions.askDeleteForGood(
        chosen.fileCount(), chosen.steps.front().file.source, false,
        [this, chosen](bool isDeleted) {
            if (isDeleted) runRemoval(chosen, true);
        });
}

void FileCommands::runRemoval(const TransferPlan& chosen, bool forGood) {
    platform::assertMainThread();
    if (chosen.isEmpty()) return;
    std::vector<QByteArray> paths;
    QHash<QByteArray, qint64> fileIds;
    for (const auto& step : chosen.steps) {
        paths.push_back(step.file.source);
        fileIds.insert(step.file.source, step.file.fileId);
    }
    _environment.tasks.start(
        {.counterKey = forGood ? QStringLiteral("ItemCountInfoWithDelete")
                               : QStringLiteral("ItemCountInfoWithTrash"),
         .deed = forGood ? Deed::Delete : Deed::Trash,
         .work =
             [forGood, paths = std::move(paths)](const fileactions::FileEditor& editor) {
                 return forGood ? editor.deleteForGood(paths) : editor.moveToTrash(paths);
             },
         .finished =
             [this, fileIds = std::move(fileIds)](const FileOutcome& outcome) {
                 QSet<qint64> gone;
                 for (const QByteArray& path : outcome.gone)
                     gone.insert(fileIds.value(path));
                 auto chains = chainsOf(_environment.groupTreeDataSource, gone);
                 if (!chains.empty()) _environment.services.removeFromWorkTree(std::move(chains));
                 finished(outcome, {u"UndoTrashFile", u"UndoTrashFiles"});
             }});
}

void FileCommands::finished(const FileOutcome& outcome, const Name& name) {
    showChanges(outcome);
    if (outcome.inverse.isEmpty()) return;
    const auto count = static_cast<qint64>(std::max(outcome.made.size(), outcome.gone.size()));
    Q_EMIT didChangeFiles(
        outcome.inverse,
        count == 1 ? localizedString(name.one) : localizedFormat(name.many, {count}));
}

void FileCommands::showChanges(const FileOutcome& outcome) {
    if (!outcome.changedRows.empty()) _environment.services.rowsDidChange(outcome.changedRows);
}

void FileCommands::perform(
    const fileactions::FileEdit& edit, std::function<void(const FileOutcome& outcome)> done) {
    _environment.tasks.start(
        {.counterKey = QStringLiteral("ItemCountInfoWithUndo"),
         .deed = Deed::Restore,
         .work = [edit](const fileactions::FileEditor& editor) { return editor.perform(edit); },
         .finished =
             [this, done = std::move(done)](const FileOutcome& outcome) {
                 showChanges(outcome);
                 done(outcome);
             }});
}
