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
    /// The same for the folder of a root that is away.
    virtual void chooseFolderOfRoot(
        const QString& displayName, const QString& startPath,
        std::function<void(const QString& path)> chosen) = 0;
    /// Whether a folder that doesn't look like that of the root is to be used for it all the same.
    virtual void askUseUnlikeFolder(
        const QString& folderName, const QString& displayName,
        std::function<void(bool isUsed)> answered) = 0;
    /// The folder lies in that root.
    virtual void alertFolderIsInSidebar(const QString& folderName, const QString& displayName) = 0;
    virtual void alertCantUseFolder(const QString& path) = 0;
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
    void chooseFolderOfRoot(
        const QString& displayName, const QString& startPath,
        std::function<void(const QString& path)> chosen) override;
    void askUseUnlikeFolder(
        const QString& folderName, const QString& displayName,
        std::function<void(bool isUsed)> answered) override;
    void alertFolderIsInSidebar(const QString& folderName, const QString& displayName) override;
    void alertCantUseFolder(const QString& path) override;
    void alertFolderAliasIsAlreadyExist(const QString& displayName) override;
    void alertCantMount(const QString& displayName, const QString& reason) override;
    void alertCantAddFolder(const QString& path) override;
    void alertCantRemoveFolder(const QString& displayName) override;

private:
    void chooseFolder(
        const QString& title, const QString& startPath,
        std::function<void(const QString& path)> chosen);

    QWidget& _window;
};
