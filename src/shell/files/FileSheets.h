#pragma once

#include "shell/files/FileQuestions.h"

#include <QString>

class QMessageBox;
class QWidget;

/// As dialogs of the window that block this window only.
class FileSheets final : public FileQuestions {
public:
    /// The window outlives this object.
    explicit FileSheets(QWidget& window) : _window(window) {}

    void askConflict(
        const Failure& conflict, std::function<void(const ConflictAnswer&)> answered) override;
    void askSkip(const Failure& failure, std::function<void(bool skips)> answered) override;
    void tellFailure(
        Deed deed, const Failure& failure, qint64 count, std::function<void()> closed) override;
    void askDeleteForGood(
        qint64 count, const QByteArray& path, bool withoutTrash,
        std::function<void(bool isDeleted)> answered) override;
    void
    chooseFolder(const QString& title, std::function<void(const QString& path)> chosen) override;

private:
    [[nodiscard]] QMessageBox*
    makeBox(int icon, const QString& message, const QString& details) const;

    QWidget& _window;
    QString _lastFolder; ///< chosen before
};
