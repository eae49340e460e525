#pragma once

#include "ui/PBScrollView.h"

class BrowserServices;

/// The scroll view of the thumbnail browser: no thumbnail is built while it moves. Main thread.
class PBImageBrowserScrollView final : public PBScrollView {
    Q_OBJECT

public:
    /// The services outlive this widget.
    explicit PBImageBrowserScrollView(BrowserServices& services, QWidget* parent = nullptr);

    void setThumbnailSize(double size) { _thumbnailSize = size; }
    [[nodiscard]] double scrollLine() const override { return _thumbnailSize / 3; }

protected:
    void scrollTimeWillBegin() override;
    void scrollTimeDidEnd(std::int64_t direction) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    BrowserServices& _services;
    double _thumbnailSize = 0;
};
