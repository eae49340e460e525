#pragma once

#include <QString>

#include <functional>

class QWidget;

/// What the user is asked and told about folder roots. Nothing here waits for the user.
class FolderPrompts {
public:
    virtual ~FolderPrompts() = default;

    /// Lets the user choose one folder, starting in the given one, or where photographs are most
    /// likely for an empty path; calls back with its path, or
    /// with an empty one when the user gave up.
    virtual void
    chooseFolder(const QString& startPath, std::function<void(const QString& path)> chosen) = 0;
    virtual void alertFolderAliasIsAlreadyExist(const QString& displayName) = 0;
    virtual void alertCantMount(const QString& displayName, const QString& reason) = 0;
    virtual void alertCantAddFolder(const QString& path) = 0;
    virtual void alertCantRemoveFolder(const QString& displayName) = 0;
};

/// As dialogs of the window that block this window only.
class FolderSheets final : public FolderPrompts {
public:
    /// The window outlives this object.
    explicit FolderSheets(QWidget& window) : _window(window) {}

    void chooseFolder(
        const QString& startPath, std::function<void(const QString& path)> chosen) override;
    void alertFolderAliasIsAlreadyExist(const QString& displayName) override;
    void alertCantMount(const QString& displayName, const QString& reason) override;
    void alertCantAddFolder(const QString& path) override;
    void alertCantRemoveFolder(const QString& displayName) override;

private:
    QWidget& _window;
};
