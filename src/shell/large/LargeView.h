#pragma once

#include "shell/large/LargeViewLists.h"
#include "shell/large/OpenedPhotograph.h"
#include "shell/menus/MenuCommand.h"
#include "viewer/controller/LargeViewHost.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class BrowserPane;
class QMainWindow;
class QStackedWidget;
class SourceSelection;
struct PBImageBrowserIndex;
struct ShellServices;

/// The large view as the second content of the window, in the browser's place: the ways in and out,
/// and how it follows what the browser shows. Main thread.
class LargeView final : public QObject, private LargeViewHost {
    Q_OBJECT

public:
    struct Parts {
        const ShellServices& services;
        QMainWindow& window;
        QStackedWidget& contents; ///< the browser and what belongs to it is its first page
        BrowserPane& browserPane;
        SourceSelection& selection;
        QWidget& info;            ///< the information panel, which is in both views
        QWidget& browserInfoView; ///< holds it while the browser is shown
        /// Opens files and folders that were dropped.
        std::function<void(const QStringList& paths)> openPaths;
    };

    /// The parts outlive this object, which outlives the window's pages.
    explicit LargeView(Parts parts);
    ~LargeView() override;

    [[nodiscard]] bool isShown() const;
    [[nodiscard]] PBImageViewController& controller() const { return *_controller; }

    /// Opens the photograph, with its group or with the others that are selected; nothing for an
    /// index without one.
    void enterToLargeView(const PBImageBrowserIndex& index);
    /// Shows what the request to open files asks for, which a scan is bringing, that file first.
    void openFilesEnterToLargeView(const OpenFilesRequest::NamedFile& first);
    /// A photograph that was opened stands alone as yet, without those of its folder.
    [[nodiscard]] bool isAwaitingOpened() const { return isShown() && _opened.isAwaited(); }
    /// The request that is shown is for that folder, or for something in it.
    [[nodiscard]] bool asksFor(const QString& folderPath) const;
    /// The photograph in focus, if it is one that commands can be given for.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> chosenImageFileItem() const;
    /// Opens the first of those that are selected.
    void view_BrowserView();
    /// Back to the browser, with the photograph that was shown selected. The position of the sheet
    /// is as it was, unless that photograph lies outside of it.
    void view_ThumbnailView();
    /// The same, without looking for what an opened folder left out: something else is shown next.
    void leave();

    /// The tree was made anew.
    void updateLargeViewData();
    /// The same photographs will come again as other items: what is shown stays until they do.
    void willShowSamePhotographs() { _isAwaitingFocus = isShown(); }
    /// Likewise, in that folder, and perhaps by other rows of the catalogue.
    void willShowSamePhotographsOf(const QString& folderPath);
    /// The scan began or ended.
    void scanStateDidChange();

    /// Whether what is dragged can be opened: a folder, or a file of a type that is read.
    [[nodiscard]] bool canOpenPath(const QString& path) const override;

    void setStatusBarShown(bool isShown) { _controller->setStatusBarShown(isShown); }
    /// What was stored of the window is to be stored anew.
    void savePositions();

Q_SIGNALS:
    void isShownDidChange(bool isShown);
    /// What can be commanded here may be other than before.
    void stateDidChange();
    /// A key, gesture or button on the picture asks for a command of the window.
    void commandRequested(MenuCommand command);
    void contextMenuRequested(const QPoint& globalPosition);

private:
    void selectDidChange(const std::shared_ptr<PBImageFileItem>& focus) override;
    void updateWindowTitle(const QString& title, const QString& representedFile) override;
    void revalidateToolbar() override { Q_EMIT stateDidChange(); }
    void rotateLeft() override { Q_EMIT commandRequested(MenuCommand::rotateLeft); }
    void rotateRight() override { Q_EMIT commandRequested(MenuCommand::rotateRight); }
    void toggleFlag() override { Q_EMIT commandRequested(MenuCommand::flagClicked); }
    void leaveLargeView() override;
    void showContextMenu(const QPoint& globalPosition) override {
        Q_EMIT contextMenuRequested(globalPosition);
    }
    void openDroppedPaths(const QStringList& paths) override;
    [[nodiscard]] bool isSlideShowMode() const override;

    void show(LargeViewLists::List list, const std::shared_ptr<PBImageFileItem>& focus);
    /// Makes the list that of the view, with that photograph of it in focus.
    void showAt(LargeViewLists::List list, const std::shared_ptr<PBImageFileItem>& focus);
    void standInCame();
    /// Selects a photograph in the browser that was left here before a scan had brought it.
    void selectLeft();
    /// True where the list is to be shown: the photograph that was opened has its place in it, or
    /// none.
    [[nodiscard]] bool takeOpened(LargeViewLists::List& list);
    void moveInfoTo(QWidget& view);
    void showList(LargeViewLists::List list);
    [[nodiscard]] bool hasFocusIn(const LargeViewLists::List& list) const;

    const Parts _parts;
    OpenedPhotograph _opened;
    QWidget* const _infoView; ///< holds the information panel while the large view is shown
    std::unique_ptr<PBImageViewController> _controller;
    LargeViewLists::GroupPath _groupPath; ///< of the group that the list mirrors
    bool _isAwaitingFocus = false;
};
