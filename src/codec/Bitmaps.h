#pragma once

#include "codec/pixels/Geometry.h"

#include <QByteArray>
#include <QColorSpace>
#include <QImage>
#include <QString>

/// Pictures in memory: encoding, decoding, scaling, turning. The standard bitmap is
/// `Format_ARGB32_Premultiplied`, or `Format_RGB32` where it is opaque; other formats are converted
/// on the way in. A null image or an empty byte array is the only sign of failure. Any thread.
namespace PBUtilities {

/// JPEG at quality 50 of 100; what is transparent becomes white.
[[nodiscard]] QByteArray cgImageRefToJpegData(const QImage& image);
/// PNG, with alpha where the picture has it.
[[nodiscard]] QByteArray cgImageRefToPngData(const QImage& image);

/// The first frame of an encoded picture that this program made itself, such as a stored thumbnail.
/// Decodes in this process: never for strangers' bytes.
[[nodiscard]] QImage dataToCGImageRef(const QByteArray& data);

/// Reduced so that neither side is above `size` pixels, each side rounded and at least 1; never
/// enlarged.
[[nodiscard]] QImage scaleCGImageRef(const QImage& image, double size);

/// The pixels converted from sRGB to the colour space, so that drawing only copies them; sRGB when
/// the space is invalid. A standard bitmap: the same image where there is nothing to convert, and
/// converted in place where nobody else holds it.
[[nodiscard]] QImage preloadedImageRef(QImage image, const QColorSpace& colorSpace);

/// Turned by the angle in degrees, counter-clockwise positive. Quarter turns give the whole
/// picture; any other angle turns about the lower left corner on a canvas of the old size, so that
/// parts may be cut off. A full turn gives the same image.
[[nodiscard]] QImage rotateImageRef(const QImage& image, double angle);

/// The image as a standard bitmap; the same image if it is one.
[[nodiscard]] QImage standardBitmap(QImage image);

} // namespace PBUtilities
