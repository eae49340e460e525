#include "shell/files/FileSheets.h"

#include "fileactions/FileErrorText.h"
#include "platform/files/FileSystem.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/WindowAlert.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

QString nameOf(const QByteArray& path) {
    return QFile::decodeName(platform::nameOfPath(path));
}

QString messageAbout(FileQuestions::Deed deed, const QByteArray& path, qint64 count) {
    using Deed = FileQuestions::Deed;
    struct Row {
        QStringView one;
        QStringView many;
    };
    const Row row = [deed]() -> Row {
        switch (deed) {
        case Deed::Copy:
            return {u"CantCopyFile", {}};
        case Deed::Move:
            return {u"CantMoveFile", {}};
        case Deed::Trash:
            return {u"CantTrashFile", u"CantTrashFiles"};
        case Deed::Delete:
            return {u"CantDeleteFile", u"CantDeleteFiles"};
        case Deed::Export:
            return {u"CantExportFile", {}};
        case Deed::Share:
            return {u"Convert File Failed", {}};
        case Deed::Restore:
            break;
        }
        return {u"CantRestoreFile", u"CantRestoreFiles"};
    }();
    if (count > 1 && !row.many.isEmpty()) return localizedFormat(row.many, {count, nameOf(path)});
    return localizedFormat(row.one, {nameOf(path)});
}

/// The photograph could not be read or encoded, whatever its place is.
bool isOfMaking(const std::error_code& error) {
    return error == std::errc::bad_message || error == std::errc::not_supported ||
           error == std::errc::resource_unavailable_try_again;
}

} // namespace

QMessageBox* FileSheets::makeBox(int icon, const QString& message, const QString& details) const {
    platform::assertMainThread();
    auto* box = new QMessageBox(
        static_cast<QMessageBox::Icon>(icon), localizedString(u"Velmora"), message,
        QMessageBox::NoButton, &_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(details);
    box->setWindowModality(Qt::WindowModal);
    return box;
}

void FileSheets::askConflict(
    const Failure& conflict, std::function<void(const ConflictAnswer&)> answered) {
    using Answer = fileactions::FilePrompts::Answer;
    QMessageBox* box = makeBox(
        QMessageBox::Critical,
        localizedFormat(
            u"FileExists",
            {nameOf(conflict.destination), nameOf(platform::folderOfPath(conflict.destination))}),
        localizedString(u"FileExistsDetails"));
    box->setObjectName(QStringLiteral("fileConflict"));
    const auto* replace =
        box->addButton(localizedString(u"FileReplace"), QMessageBox::DestructiveRole);
    QPushButton* stop = box->addButton(localizedString(u"FileStop"), QMessageBox::RejectRole);
    QPushButton* skip = box->addButton(localizedString(u"FileSkip"), QMessageBox::AcceptRole);
    auto* forAll = new QCheckBox(localizedString(u"ApplyToAll"));
    box->setCheckBox(forAll);
    // Return must not delete anything.
    box->setDefaultButton(skip);
    box->setEscapeButton(stop);
    QObject::connect(
        box, &QMessageBox::finished, box,
        [box, replace, skip, forAll, answered = std::move(answered)] {
            const QAbstractButton* clicked = box->clickedButton();
            const Answer answer = clicked == replace ? Answer::Replace
                                  : clicked == skip  ? Answer::Skip
                                                     : Answer::Stop;
            answered({.answer = answer, .applyToAll = forAll->isChecked()});
        });
    box->open();
}

void FileSheets::askSkip(const Failure& failure, std::function<void(bool skips)> answered) {
    const QStringView message = failure.destination.isEmpty() ? u"CantMakeFolder"
                                : isOfMaking(failure.error)   ? u"CantExportFile"
                                                              : u"CantReplaceFile";
    QMessageBox* box = makeBox(
        QMessageBox::Critical, localizedFormat(message, {nameOf(failure.path)}),
        fileactions::fileErrorText(failure.error));
    box->setObjectName(QStringLiteral("fileSkipOrStop"));
    QPushButton* skip = box->addButton(localizedString(u"FileSkip"), QMessageBox::AcceptRole);
    QPushButton* stop = box->addButton(localizedString(u"FileStop"), QMessageBox::RejectRole);
    box->setDefaultButton(skip);
    box->setEscapeButton(stop);
    QObject::connect(box, &QMessageBox::finished, box, [box, skip, answered = std::move(answered)] {
        answered(box->clickedButton() == skip);
    });
    box->open();
}

void FileSheets::tellFailure(
    Deed deed, const Failure& failure, qint64 count, std::function<void()> closed) {
    if (deed == Deed::Export && failure.error == std::errc::bad_message) {
        showWindowAlert(
            _window, localizedFormat(u"Can not open file", {nameOf(failure.path)}),
            localizedFormat(u"Can not open file information", {localizedString(u"Velmora")}),
            std::move(closed));
        return;
    }
    showWindowAlert(
        _window, messageAbout(deed, failure.path, count), fileactions::fileErrorText(failure.error),
        std::move(closed));
}

void FileSheets::askDeleteForGood(
    qint64 count, const QByteArray& path, bool withoutTrash,
    std::function<void(bool isDeleted)> answered) {
    const bool isOne = count == 1;
    QString message;
    if (withoutTrash) {
        message = isOne ? localizedString(u"AskDeleteOneWithoutTrash")
                        : localizedFormat(u"AskDeleteWithoutTrash", {count});
    } else {
        message = isOne ? localizedFormat(u"AskDeleteFile", {nameOf(path)})
                        : localizedFormat(u"AskDeleteFiles", {count});
    }
    askInWindow(
        _window,
        {.message = message,
         .details = localizedString(isOne ? u"AskDeleteFileDetails" : u"AskDeleteDetails"),
         .consent = localizedString(u"DeleteForGood"),
         .other = {}},
        [answered = std::move(answered)](WindowAnswer answer) {
            answered(answer == WindowAnswer::Consent);
        });
}

void FileSheets::chooseFolder(
    const QString& title, std::function<void(const QString& path)> chosen) {
    platform::assertMainThread();
    QString start = _lastFolder;
    if (!QFileInfo(start).isDir())
        start = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (!QFileInfo(start).isDir()) start = QDir::homePath();
    auto* dialog = new QFileDialog(&_window, title, start);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setWindowModality(Qt::WindowModal);
    QObject::connect(
        dialog, &QFileDialog::finished, dialog,
        [this, dialog, chosen = std::move(chosen)](int result) {
            const QStringList paths = dialog->selectedFiles();
            const bool isChosen = result == QDialog::Accepted && !paths.isEmpty();
            if (isChosen) _lastFolder = paths.constFirst();
            chosen(isChosen ? paths.constFirst() : QString());
        });
    dialog->open();
}
