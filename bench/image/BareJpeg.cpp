#include "image/BareJpeg.h"

#include "image/JpegWriter.h"

namespace bench {

QImage decodeBare(const QByteArray& file, unsigned eighths) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr error{};
    info.err = jpeg_std_error(&error);
    jpeg_create_decompress(&info);
    jpeg_mem_src(
        &info, reinterpret_cast<const unsigned char*>(file.constData()),
        static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    info.scale_num = eighths;
    info.scale_denom = 8;
    info.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&info);
    QImage image(
        static_cast<int>(info.output_width), static_cast<int>(info.output_height),
        QImage::Format_RGB32);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = image.scanLine(static_cast<int>(info.output_scanline));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return image;
}

qsizetype encodeBare(const QImage& image) {
    return support::writeJpeg(
               {image.size(), JCS_EXT_BGRX, 50}, [&](int y) { return image.constScanLine(y); })
        .size();
}

} // namespace bench
