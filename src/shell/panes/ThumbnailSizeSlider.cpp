#include "shell/panes/ThumbnailSizeSlider.h"

#include "browser/layout/BrowserMetrics.h"
#include "platform/program/LocalizedTexts.h"

#include <QSignalBlocker>

#include <cmath>
#include <utility>

namespace {

constexpr int middle = 50;
constexpr int catchRange = 5;

} // namespace

ThumbnailSizeSlider::ThumbnailSizeSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setRange(0, 100);
    // More than the range that the middle catches, or keys and wheel could never leave it.
    setSingleStep(catchRange + 1);
    setPageStep(3 * (catchRange + 1));
    setValue(middle);
    setFixedWidth(120);
    setObjectName(QStringLiteral("thumbnailSize"));
    setFocusPolicy(Qt::TabFocus);
    const QString name = platform::localizedString(u"ThumbnailSize");
    setToolTip(name);
    setAccessibleName(name);
    connect(this, &QSlider::valueChanged, this, &ThumbnailSizeSlider::sliderChanged);
}

void ThumbnailSizeSlider::setThumbnailSize(double size) {
    // Several values stand for the default size; the one chosen stays.
    if (sliderToThumbSize(value()) == size) return;
    const QSignalBlocker blocker(this);
    setValue(static_cast<int>(std::lround(thumbSizeToSlider(size))));
    _last = value();
}

void ThumbnailSizeSlider::sliderChanged(int value) {
    if (std::abs(value - middle) <= catchRange && value != middle) {
        const QSignalBlocker blocker(this);
        setValue(middle);
        value = middle;
    }
    if (std::exchange(_last, value) != value) Q_EMIT thumbnailSizeSlide(value);
}
