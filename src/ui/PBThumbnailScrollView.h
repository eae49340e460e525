#pragma once

#include "ui/PBScrollView.h"

/// What the strip of thumbnails tells its scroll view.
class ThumbnailStrip {
public:
    virtual ~ThumbnailStrip() = default;
    /// The length of one thumbnail along the strip, in points.
    [[nodiscard]] virtual double itemSize() const = 0;
    /// Where a motion towards the position may end: at the edge of a thumbnail.
    [[nodiscard]] virtual double roundPosition(double position) const = 0;
    virtual void scrollTimeDidEnd(std::int64_t direction) = 0;
};

/// The scroll view of a strip of thumbnails, which lies in a frame of its own. Main thread.
class PBThumbnailScrollView final : public PBScrollView {
    Q_OBJECT

public:
    explicit PBThumbnailScrollView(Qt::Orientation axis, QWidget* parent = nullptr);

    /// Outlives this widget or is taken away by nullptr.
    void setStrip(ThumbnailStrip* strip) { _strip = strip; }

    [[nodiscard]] double scrollLine() const override;
    [[nodiscard]] bool useMagicScroll() const override { return false; }

    /// Fills the parent but for a margin.
    void layoutThumbnailView();

protected:
    [[nodiscard]] double roundPosition(double position) const override;
    void scrollTimeDidEnd(std::int64_t direction) override;

private:
    ThumbnailStrip* _strip = nullptr;
};
