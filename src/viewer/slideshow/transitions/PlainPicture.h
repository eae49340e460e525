#pragma once

#include <QImage>

/// A picture as the slideshow shows it at rest: in the middle of a black view of that size, in
/// device pixels, turned clockwise by so many degrees, reduced until it fits in and never enlarged.
/// RGB32. Without a picture the view is black. Null if memory is refused. Any thread.
[[nodiscard]] QImage plainPicture(const QImage& picture, double angle, const QSize& size);
