#pragma once

#include <QSlider>

/// The slider for the size of the thumbnails, 0 to 100, whose middle catches: a value from 45 to 55
/// becomes 50, which stands for the default size. Main thread.
class ThumbnailSizeSlider final : public QSlider {
    Q_OBJECT

public:
    explicit ThumbnailSizeSlider(QWidget* parent = nullptr);

    /// Shows the size without a signal; points.
    void setThumbnailSize(double size);

Q_SIGNALS:
    /// The user chose another value, caught in the middle already.
    void thumbnailSizeSlide(double slider);

private:
    void sliderChanged(int value);

    int _last = 50;
};
