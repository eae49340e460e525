#pragma once

#include "fileactions/export/PictureExport.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/files/FileTasks.h"

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

class ChosenPhotographs;
class PBImageImporterManager;

namespace group {
class FolderPaths;
}

/// What the user is asked before an export, as dialogs of the window. Each call returns at once and
/// answers later, at most once: a cancel is no answer. Main thread.
class ExportDialogs final {
public:
    using Settings = fileactions::ExportSettings;

    /// The window outlives this object.
    explicit ExportDialogs(QWidget& window) : _window(window) {}
    void askSettings(
        const Settings& settings, std::int64_t count, std::function<void(const Settings&)> chosen);
    /// The file for a single photograph, and whether one of that name may be replaced; otherwise
    /// nobody was asked about it.
    void askFile(
        const QString& name, const Settings& settings,
        std::function<void(const QString& path, bool replaces)> chosen);
    /// Closes what is being asked of these, without an answer; false where nothing is.
    bool withdraw();
    /// The export is done, but these photographs are without metadata that were wanted.
    void tellMetadataMissing(std::int64_t count);

private:
    QWidget& _window;
    QString _lastFolder;
    QPointer<QDialog> _asking;
};

/// The export of the chosen photographs. Its settings stay for the run of the program. Main thread.
class ExportCommands final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        PBImageImporterManager& imageImporterManager;
        const group::FolderPaths& folderPaths;
        FileTasks& tasks;
        FileQuestions& questions;
        ExportDialogs& exportQuestions;
        const ChosenPhotographs& chosen;
        /// Told of the end, as with any command on files.
        std::function<void(const fileactions::FileOutcome& outcome)> finished;
    };
    /// All that is named outlives this object.
    explicit ExportCommands(Environment environment) : _environment(std::move(environment)) {}
    /// Waits for what is being read.
    ~ExportCommands() override;

    void exportImage();

private:
    struct Photograph {
        QByteArray path;
        double angle = 0;
        qint64 fileId = 0;
    };
    [[nodiscard]] std::vector<Photograph> photographs() const;
    [[nodiscard]] fileactions::ExportSettings firstSettings(const QByteArray& path) const;
    /// Says while the questions are open that the photograph can't be read, and closes them.
    void tellIfUnreadable(const Photograph& photograph);
    void choosePlace(
        const std::vector<Photograph>& photographs, const fileactions::ExportSettings& settings);
    /// To files of these names in the folder.
    void write(
        const std::vector<Photograph>& photographs, const QByteArray& folder,
        const std::vector<QByteArray>& names, bool replaces);

    const Environment _environment;
    fileactions::ExportSettings _settings; ///< its type empty before the first export
    std::stop_source _stopReading;         ///< of the photograph that is asked about
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _reading{QStringLiteral("export")}; // ends before all else
};
