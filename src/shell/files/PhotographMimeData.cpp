#include "shell/files/PhotographMimeData.h"

#include <QTransform>

namespace {

/// Qt's own name of a picture, from which it makes each format that is asked for.
const QString anyPicture = QStringLiteral("application/x-qt-image");

} // namespace

void PhotographMimeData::setPhotograph(const QString& path, double rotateAngle) {
    _path = path;
    _rotateAngle = rotateAngle;
}

QStringList PhotographMimeData::formats() const {
    QStringList formats = QMimeData::formats();
    if (!_path.isEmpty()) formats.append(anyPicture);
    return formats;
}

bool PhotographMimeData::hasFormat(const QString& mimeType) const {
    return formats().contains(mimeType);
}

QVariant PhotographMimeData::retrieveData(const QString& mimeType, QMetaType type) const {
    if (mimeType != anyPicture || _path.isEmpty()) return QMimeData::retrieveData(mimeType, type);
    if (_picture.isNull()) {
        _picture = _decode(_path);
        if (!_picture.isNull() && _rotateAngle != 0)
            _picture = _picture.transformed(QTransform().rotate(-_rotateAngle));
    }
    return _picture;
}
