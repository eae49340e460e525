#pragma once

#include "browser/feed/BrowserServices.h"
#include "catalogue/PBCatalogue.h"
#include "group/GroupTreeViews.h"
#include "group/PBGroupTreeDataSource.h"
#include "image/PBThumbnailBufferManager.h"
#include "viewer/bin/StripThumbnails.h"

#include <QObject>

#include <functional>
#include <memory>

class PBImageBrowserScrollView;
class PBImageBrowserView;
class QWidget;
struct ShellServices;

/// The thumbnail browser in the main window: gives it what it needs of the program, and shows the
/// live tree in it. Main thread.
class BrowserPane final : public QObject, private BrowserServices, private group::GroupTreeDisplay {
    Q_OBJECT

public:
    /// `updateTip` says anew why the browser is empty.
    BrowserPane(const ShellServices& services, std::function<void()> updateTip);
    /// The widget is gone by then.
    ~BrowserPane() override;

    /// The scroll view with the browser; whoever gives it a place becomes its owner, and goes
    /// before this object does.
    [[nodiscard]] QWidget* view() const;
    [[nodiscard]] PBImageBrowserView& browserView() const { return *_view; }
    [[nodiscard]] PBImageBrowserScrollView& scrollView() const { return *_scrollView; }

    /// Absolute paths of the selected images, those in folded groups too.
    [[nodiscard]] QStringList selectedFilePath() const;
    /// The first photograph on show; invalid if there is none.
    [[nodiscard]] PBImageBrowserIndex firstShownIndex() const;
    [[nodiscard]] const group::FolderPaths& folderPaths() const override { return _folderPaths; }

    /// Where the thumbnails of the photographs come from, for other views of them.
    [[nodiscard]] ThumbnailSources thumbnailSources();
    /// What of the live tree concerns the large view. Empty functions while there is none.
    struct LargeViewHooks {
        std::function<bool()> isScrolling;
        std::function<void()> updateLargeViewData;
    };
    void setLargeView(LargeViewHooks hooks) { _largeView = std::move(hooks); }

    /// Drops images, thumbnails and position: another folder will be shown, or the same one anew,
    /// whose photographs keep selection and place.
    void clear(bool isSameFolder);
    void updateImageBrowserViewData() override;
    /// Shows the head of the leaf with this data; animated unless it is far.
    void scrollToLeaf(const PBGroupItemData& leaf);

private:
    /// Thumbnails over one connection.
    class StoredThumbnails;

    [[nodiscard]] ThumbnailLoader& thumbnailLoader() override;
    [[nodiscard]] ThumbnailLoader& preloadThumbnailLoader() override;
    [[nodiscard]] platform::OperationQueue& preloadThumbnailOperationQueue() override;
    [[nodiscard]] platform::OperationQueue& buildThumbOperationQueue() override;
    [[nodiscard]] std::unique_ptr<PBImageImporterProtocol>
    imageImporter(const PBImageFileItem& item) override;
    [[nodiscard]] PBThumbnailBufferManager& thumbnailBufferManager() override { return _buffer; }
    [[nodiscard]] QString tagWithTagId(qint64 tagId) const override;
    [[nodiscard]] QString folderTitle(const QString& path) const override;
    [[nodiscard]] bool isLargeView() const override;

    [[nodiscard]] bool isScrollingOrDragging() const override;
    void updateLargeViewData() override;
    void updateImageBrowserTipView() override { _updateTip(); }
    void updateBrowserScrollCapture() override;

    const ShellServices& _services;
    const std::function<void()> _updateTip;
    const std::unique_ptr<StoredThumbnails> _loader;
    const std::unique_ptr<StoredThumbnails> _preloadLoader;
    const group::CatalogueFolderPaths _folderPaths;
    LargeViewHooks _largeView;
    PBThumbnailBufferManager _buffer;
    // Owned by the widget that they were given a place in.
    PBImageBrowserScrollView* _scrollView;
    PBImageBrowserView* _view;
};
