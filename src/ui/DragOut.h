#pragma once

#include <QImage>
#include <QMimeData>
#include <QSize>
#include <QStringList>

#include <memory>

/// What leaves the program by a drag.
namespace DragOut {

/// The files as URLs, and as plain text for editors and terminals.
[[nodiscard]] std::unique_ptr<QMimeData> mimeData(const QStringList& paths);

/// The picture at the mouse: the thumbnail as it is shown, with a badge for two files or more. A
/// null thumbnail gives a frame. The size is in points.
[[nodiscard]] QImage
picture(const QImage& thumbnail, QSize size, double rotateAngle, qsizetype count, double ratio);

} // namespace DragOut
