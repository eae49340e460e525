#include "shell/files/PhotographMimeData.h"

#include <chrono>
#include <utility>

namespace {

const QString png = QStringLiteral("image/png");
/// Nobody takes a window for stuck that answers within that.
constexpr std::chrono::milliseconds patience{200};

} // namespace

void PhotographMimeData::offerPicture(platform::OperationQueue& queue, Make make) {
    _picture = std::make_shared<Picture>();
    queue.addOperation([picture = _picture, make = std::move(make)] {
        QByteArray file = make(picture->stop.get_token());
        const platform::Lock lock(picture->mutex);
        picture->file = std::move(file);
        picture->made.notifyAll();
    });
}

QStringList PhotographMimeData::formats() const {
    QStringList formats = QMimeData::formats();
    if (_picture) formats.append(png);
    return formats;
}

bool PhotographMimeData::hasFormat(const QString& mimeType) const {
    return formats().contains(mimeType);
}

QVariant PhotographMimeData::retrieveData(const QString& mimeType, QMetaType type) const {
    if (mimeType != png || !_picture) return QMimeData::retrieveData(mimeType, type);
    platform::Lock lock(_picture->mutex);
    const bool isMade = _picture->made.waitFor(lock, patience, [this] {
        _picture->mutex.assertHeld();
        return _picture->file.has_value();
    });
    return isMade ? QVariant(*_picture->file) : QVariant();
}
