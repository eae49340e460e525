#include "shell/files/ExportCommands.h"

#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"
#include "fileactions/export/ExportAhead.h"
#include "fileactions/export/ExportPlan.h"
#include "group/PBGroupItem.h"
#include "platform/files/TypeIdentifiers.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/Cores.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "shell/files/ExportSheet.h"
#include "shell/services/ChosenPhotographs.h"
#include "ui/WindowAlert.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <utility>

using fileactions::ExportSettings;
using platform::localizedFormat;
using platform::localizedString;
using platform::MainLoop;

namespace Types = platform::TypeIdentifiers;

namespace {

/// Of the names that files of the type have, for dialogs that tell small letters from large ones.
QString patternsOf(const QString& type) {
    QStringList patterns;
    const auto add = [&](const QString& extension) {
        patterns << QStringLiteral("*.") + extension << QStringLiteral("*.") + extension.toUpper();
    };
    add(Types::preferredExtension(type));
    for (const QStringView other : {u"jpeg", u"tiff", u"heif", u"hif", u"jpf"})
        if (Types::equal(Types::forExtension(other), type)) add(other.toString());
    return patterns.join(u' ');
}

} // namespace

void ExportDialogs::askSettings(
    const Settings& settings, std::int64_t count, std::function<void(const Settings&)> chosen) {
    platform::assertMainThread();
    auto* sheet = new ExportSheet(settings, count, _window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(sheet, &QDialog::accepted, sheet, [sheet, chosen = std::move(chosen)] {
        chosen(sheet->settings());
    });
    _asking = sheet;
    sheet->open();
}

bool ExportDialogs::withdraw() {
    platform::assertMainThread();
    const bool isAsking = _asking && _asking->isVisible();
    if (isAsking) _asking->reject();
    return isAsking;
}

void ExportDialogs::askFile(
    const QString& name, const Settings& settings,
    std::function<void(const QString& path, bool replaces)> chosen) {
    platform::assertMainThread();
    QString start = _lastFolder;
    if (!QFileInfo(start).isDir())
        start = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (!QFileInfo(start).isDir()) start = QDir::homePath();
    auto* dialog = new QFileDialog(
        &_window, localizedString(u"ExportTitle"), start,
        QStringLiteral("%1 (%2)").arg(
            Types::description(settings.type), patternsOf(settings.type)));
    dialog->setObjectName(QStringLiteral("exportFile"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(name);
    dialog->setWindowModality(Qt::WindowModal);
    // Its question whether to replace a file closes in the same moment, and some window managers
    // look no further than that for who has the keys then.
    QObject::connect(
        dialog, &QFileDialog::finished, &_window, [this] { _window.activateWindow(); });
    QObject::connect(
        dialog, &QFileDialog::fileSelected, dialog,
        [this, type = settings.type, chosen = std::move(chosen)](const QString& path) {
            if (path.isEmpty()) return;
            _lastFolder = QFileInfo(path).path();
            // Under the name that gets its extension here nobody has asked for anything, nor for
            // a file that comes to be only now.
            const bool isOfType = Types::equal(Types::forExtension(QFileInfo(path).suffix()), type);
            const QString extension = u'.' + Types::preferredExtension(type);
            chosen(isOfType ? path : path + extension, isOfType && QFileInfo::exists(path));
        });
    _asking = dialog;
    dialog->open();
}

void ExportDialogs::tellMetadataMissing(std::int64_t count) {
    showWindowAlert(
        _window, count == 1 ? localizedString(u"ExportWithoutMetadata")
                            : localizedFormat(u"ExportsWithoutMetadata", {count}));
}

ExportCommands::~ExportCommands() {
    _stopReading.request_stop();
}

std::vector<ExportCommands::Photograph> ExportCommands::photographs() const {
    std::vector<Photograph> photographs;
    group::FolderPathCache cache;
    for (const auto& item : _environment.chosen.all()) {
        const QString path = item->filePath(_environment.folderPaths, cache);
        if (!path.isEmpty())
            photographs.push_back({QFile::encodeName(path), item->rotateAngle(), item->fileId()});
    }
    return photographs;
}

/// The type of the photograph itself where it can be written, the first time; later what was
/// chosen last.
ExportSettings ExportCommands::firstSettings(const QByteArray& path) const {
    ExportSettings settings = _settings;
    if (!settings.type.isEmpty()) return settings;
    const QString own = Types::forExtension(QFileInfo(QFile::decodeName(path)).suffix());
    settings.type = codec::writableTypes().contains(own) ? own : QStringLiteral("public.jpeg");
    return settings;
}

void ExportCommands::exportImage() {
    platform::assertMainThread();
    const std::vector<Photograph> chosen = photographs();
    if (chosen.empty()) return;
    _environment.exportQuestions.askSettings(
        firstSettings(chosen.front().path), std::ssize(chosen),
        [this, chosen](const ExportSettings& settings) { choosePlace(chosen, settings); });
    if (chosen.size() == 1) tellIfUnreadable(chosen.front());
}

void ExportCommands::tellIfUnreadable(const Photograph& photograph) {
    _stopReading.request_stop();
    _stopReading = std::stop_source();
    _reading.addOperation([this, alive = std::weak_ptr(_alive), photograph,
                           stop = _stopReading.get_token(),
                           &importers = _environment.imageImporterManager] {
        const QString path = QFile::decodeName(photograph.path);
        if (fileactions::isReadable(importers, path, stop)) return;
        MainLoop* loop = MainLoop::instance();
        if (!loop) return;
        loop->post(MainLoop::Mode::Common, [this, alive, photograph, stop] {
            if (alive.expired() || stop.stop_requested()) return;
            if (!_environment.exportQuestions.withdraw()) return;
            _environment.questions.tellFailure(
                FileQuestions::Deed::Export,
                {.path = photograph.path,
                 .destination = {},
                 .error = std::make_error_code(std::errc::bad_message)},
                1, [] {});
        });
    });
}

/// Until a place is chosen, nothing is remembered.
void ExportCommands::choosePlace(
    const std::vector<Photograph>& photographs, const ExportSettings& settings) {
    if (photographs.size() == 1) {
        const QByteArray name = fileactions::exportName(photographs.front().path, settings.type);
        _environment.exportQuestions.askFile(
            QFile::decodeName(name), settings,
            [this, settings, photographs](const QString& path, bool replaces) {
                _settings = settings;
                const QByteArray target = QFile::encodeName(path);
                write(
                    photographs, platform::folderOfPath(target), {platform::nameOfPath(target)},
                    replaces);
            });
        return;
    }
    _environment.questions.chooseFolder(
        localizedString(u"ChooseExportFolder"),
        [this, settings, photographs](const QString& folder) {
            if (folder.isEmpty()) return;
            _settings = settings;
            std::vector<QByteArray> paths;
            for (const Photograph& photograph : photographs)
                paths.push_back(photograph.path);
            write(
                photographs, QFile::encodeName(folder),
                fileactions::exportNames(paths, settings.type), false);
        });
}

void ExportCommands::write(
    const std::vector<Photograph>& photographs, const QByteArray& folder,
    const std::vector<QByteArray>& names, bool replaces) {
    _stopReading.request_stop();
    const auto missing = std::make_shared<std::atomic<std::int64_t>>(0);
    auto work = [photographs, folder, names, replaces, missing, settings = _settings,
                 &importers =
                     _environment.imageImporterManager](const fileactions::FileEditor& editor) {
        const int cores = platform::usableCores();
        const int threads = std::min(cores, static_cast<int>(photographs.size()));
        fileactions::PictureExport pictures(importers, settings, cores / threads);
        fileactions::ExportAhead ahead(
            photographs.size(), threads, [&](std::size_t index, const std::stop_token& stop) {
                const Photograph& photograph = photographs[index];
                return pictures.make(QFile::decodeName(photograph.path), photograph.angle, stop);
            });
        fileactions::TransferPlan plan;
        for (std::size_t i = 0; i < photographs.size(); ++i) {
            plan.addFile(
                {.source = photographs[i].path,
                 .folder = folder,
                 .name = names[i],
                 .fileId = photographs[i].fileId,
                 .make =
                     [&ahead, i, missing](const std::stop_token& stop, QByteArray& content) {
                         fileactions::ExportedPicture picture = ahead.take(i, stop);
                         content = std::move(picture.content);
                         if (picture.isMetadataMissing) ++*missing;
                         return picture.error;
                     },
                 .replaces = replaces});
        }
        return editor.transfer(plan);
    };
    _environment.tasks.start(
        {.counterKey = QStringLiteral("ItemCountInfoWithExport"),
         .deed = FileQuestions::Deed::Export,
         .work = std::move(work),
         .finished = [this, missing](const fileactions::FileOutcome& outcome) {
             _environment.finished(outcome);
             if (*missing > 0) _environment.exportQuestions.tellMetadataMissing(*missing);
         }});
}
