#include "image/JpegWriter.h"

#include <cstdlib>

namespace support {

QByteArray writeJpeg(const JpegShape& shape, const std::function<const std::uint8_t*(int)>& row) {
    jpeg_compress_struct info{};
    jpeg_error_mgr error{};
    info.err = jpeg_std_error(&error);
    jpeg_create_compress(&info);
    unsigned char* output = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &output, &length);
    info.image_width = static_cast<JDIMENSION>(shape.size.width());
    info.image_height = static_cast<JDIMENSION>(shape.size.height());
    info.input_components = 4;
    info.in_color_space = shape.samples;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, shape.quality, TRUE);
    if (shape.samples == JCS_CMYK) info.write_Adobe_marker = shape.hasAdobeMarker ? TRUE : FALSE;
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < shape.size.height(); ++y) {
        auto* samples = const_cast<JSAMPROW>(row(y));
        jpeg_write_scanlines(&info, &samples, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const QByteArray file(reinterpret_cast<const char*>(output), static_cast<qsizetype>(length));
    std::free(output); // NOLINT(cppcoreguidelines-no-malloc): the library's
    return file;
}

} // namespace support
