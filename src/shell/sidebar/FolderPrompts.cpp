#include "shell/sidebar/FolderPrompts.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/WindowAlert.h"

#include <QDir>
#include <QFileDialog>
#include <QStandardPaths>

#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// Where photographs are most likely, and never where the program happened to be started.
QString firstFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QDir(pictures).exists() ? pictures : QDir::homePath();
}

} // namespace

void FolderSheets::chooseFolder(
    const QString& startPath, std::function<void(const QString& path)> chosen) {
    chooseFolder(
        localizedString(u"ChooseFolder"), startPath.isEmpty() ? firstFolder() : startPath,
        std::move(chosen));
}

void FolderSheets::chooseFolderOfRoot(
    const QString& displayName, const QString& startPath,
    std::function<void(const QString& path)> chosen) {
    chooseFolder(
        localizedFormat(u"ChooseFolderOfRoot", {displayName}),
        startPath.isEmpty() ? firstFolder() : startPath, std::move(chosen));
}

void FolderSheets::chooseFolder(
    const QString& title, const QString& startPath,
    std::function<void(const QString& path)> chosen) {
    auto* dialog = new QFileDialog(&_window, title, startPath);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOptions(QFileDialog::ShowDirsOnly | QFileDialog::ReadOnly);
    dialog->setWindowModality(Qt::WindowModal);
    QObject::connect(
        dialog, &QFileDialog::finished, dialog, [dialog, chosen = std::move(chosen)](int result) {
            const QStringList paths = dialog->selectedFiles();
            const bool isChosen = result == QDialog::Accepted && !paths.isEmpty();
            chosen(isChosen ? paths.constFirst() : QString());
        });
    dialog->open();
}

void FolderSheets::askUseUnlikeFolder(
    const QString& folderName, const QString& displayName,
    std::function<void(bool isUsed)> answered) {
    askInWindow(
        _window,
        {.message = localizedFormat(u"AskUseUnlikeFolder", {folderName, displayName}),
         .details = localizedFormat(u"AskUseUnlikeFolderDetails", {displayName}),
         .consent = localizedString(u"UseUnlikeFolder"),
         .other = {}},
        [answered = std::move(answered)](WindowAnswer answer) {
            answered(answer == WindowAnswer::Consent);
        });
}

void FolderSheets::alertFolderIsInSidebar(const QString& folderName, const QString& displayName) {
    showWindowAlert(_window, localizedFormat(u"AlertFolderInSidebar", {folderName, displayName}));
}

void FolderSheets::alertCantUseFolder(const QString& path) {
    showWindowAlert(_window, localizedFormat(u"CantUseFolder", {path}));
}

void FolderSheets::alertFolderAliasIsAlreadyExist(const QString& displayName) {
    showWindowAlert(_window, localizedFormat(u"AlertFolderAlreadyExist", {displayName}));
}

void FolderSheets::alertCantMount(const QString& displayName, const QString& reason) {
    showWindowAlert(_window, localizedFormat(u"CantMount", {displayName}), reason);
}

void FolderSheets::alertCantAddFolder(const QString& path) {
    showWindowAlert(_window, localizedFormat(u"CantAddFolder", {path}));
}

void FolderSheets::alertCantRemoveFolder(const QString& displayName) {
    showWindowAlert(
        _window, localizedFormat(u"CantRemoveFolder", {displayName}),
        localizedString(u"CantRemoveFolderDetails"));
}
