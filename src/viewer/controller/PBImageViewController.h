#pragma once

#include "viewer/ImageViewHost.h"
#include "viewer/ImageViewServices.h"
#include "viewer/bin/PBThumbnailView.h"
#include "viewer/bin/PhotoBinHost.h"
#include "viewer/controller/ImageViewPanes.h"

#include <QObject>

#include <memory>

class ImageStatusBarView;
class LargeViewHost;
class PBImageView;
class PBThumbnailScrollView;

/// The large view: the picture, the strip below it, the information panel beside it, and the bar
/// below them. Main thread.
class PBImageViewController final : public QObject, private ImageViewHost, private PhotoBinHost {
    Q_OBJECT

public:
    struct Parts {
        LargeViewHost& host;
        ImageViewServices services;
        ThumbnailSources thumbnails;
        platform::UserDefaults& userDefaults;
        QWidget* info; ///< what stands in the information pane; taken in
    };
    /// What the parts refer to outlives this object.
    explicit PBImageViewController(const Parts& parts);
    ~PBImageViewController() override;

    /// All of it; whoever gives it a place becomes its owner, and it goes before this object does.
    [[nodiscard]] QWidget* view() const;
    [[nodiscard]] PBImageView& imageView() const { return *_imageView; }
    [[nodiscard]] PBThumbnailView& thumbnailView() const { return *_thumbnailView; }
    [[nodiscard]] PhotoBin& bin() const { return _thumbnailView->bin(); }
    [[nodiscard]] ImageViewPanes& panes() const { return *_panes; }

    /// What the bin is to hold: the list, and the group that it mirrors, or nullptr for a list of
    /// selected photographs.
    struct List {
        PBImageFileArray items;
        std::shared_ptr<PBGroupItemData> groupItem;
    };
    /// The view is on show from now on, with that photograph first.
    void enter(List list, const std::shared_ptr<PBImageFileItem>& focus);
    /// It is not any more: nothing is loaded, and nothing of it stays in memory.
    void leave();
    [[nodiscard]] bool isEntered() const { return _isEntered; }

    /// The tree was made anew and the list with it; the photograph on show stays if it is in it.
    void updateList(List list);
    /// Shows that photograph of the list, which is selected in place of the former one.
    void goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item);
    /// No scan runs any more: what has not come does not come.
    void scanFinished();
    /// Marks, rotation or name of photographs were changed.
    void itemsDidChange();
    /// A thumbnail was built for the photograph.
    void buildThumbDidFinish(qint64 fileId) { _thumbnailView->buildThumbDidFinish(fileId); }

    /// The keyboard goes to the strip, or to the picture where the strip is hidden.
    void takeFocus();
    void setStatusBarShown(bool isShown);
    /// Tells the sentence in the status bar for some seconds; false where that is hidden.
    [[nodiscard]] bool tell(const QString& sentence);
    /// Of the file that is shown; empty where that is not known.
    [[nodiscard]] QString shownPath() const;
    /// Number, count and name of the photograph; empty without one.
    [[nodiscard]] QString title() const;

private:
    class ContentBaseView;

    void updateInfoLabel();
    void updateWindowTitle();

    // What the picture asks for.
    [[nodiscard]] std::shared_ptr<PBImageFileItem> focusImageFileItem() const override;
    [[nodiscard]] std::int64_t focusIndex() const override;
    [[nodiscard]] std::shared_ptr<PBImageFileItem> nextImageFileItem() const override;
    [[nodiscard]] std::shared_ptr<PBImageFileItem> prevImageFileItem() const override;
    [[nodiscard]] std::vector<IndexedImage> preloadImageFileItemWithCount(int count) const override;
    [[nodiscard]] std::vector<std::shared_ptr<PBImageFileItem>>
    visibleImageFileItems() const override;
    void navigateToNextImage() override;
    void navigateToPreviousImage() override;
    void navigateToFirstImage() override;
    void navigateToLastImage() override;
    void rotateLeft() override;
    void rotateRight() override;
    void toggleFlag() override;
    void leaveLargeView() override;
    void showContextMenu(const QPoint& globalPosition) override;
    void updateZoomSizeSlider() override;
    void revalidateToolbar() override;
    [[nodiscard]] bool canOpenPath(const QString& path) const override;
    void openDroppedPaths(const QStringList& paths) override;
    [[nodiscard]] bool isSlideShowMode() const override;

    // What the strip asks for.
    void showImageAtIndex(std::int64_t index) override;
    void selectDidChange() override;
    void tryPreloadNextOrPrevImage() override;
    void focusDidLeave(PBImageFileItem& item) override;
    void focusWasReplaced(
        const std::shared_ptr<PBImageFileItem>& former,
        const std::shared_ptr<PBImageFileItem>& item) override;
    void listDidReload() override;
    void stopProgress() override;
    void keyDown(QKeyEvent& event) override;
    void popUpContextMenu(const QPoint& globalPosition) override;
    [[nodiscard]] QString filePath(const PBImageFileItem& item) const override;

    LargeViewHost& _host;
    const ImageViewServices _services;
    bool _isEntered = false;
    bool _wasShown = false;
    // Children of the view, which its place owns.
    ContentBaseView* _contentBaseView;
    PBImageView* _imageView;
    PBThumbnailScrollView* _thumbnailScrollView;
    PBThumbnailView* _thumbnailView;
    ImageViewPanes* _panes; // a child of this
    ImageStatusBarView* _statusBarView;
};
